package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertNull;

import java.io.File;
import java.io.IOException;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class VersionFoldersTest {
  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private String newestOf(String name, String... folders) throws IOException {
    File master = folder.newFolder();
    for (String each : folders) {
      new File(master, each).mkdir();
    }
    File newest = VersionFolders.newest(master, name);
    return newest == null ? null : newest.getName();
  }

  @Test
  public void theHighestNumberWins() throws IOException {
    assertEquals(
        "Quillory-App-12-complete",
        newestOf("App", "Quillory-App-9-complete", "Quillory-App-12-complete", "Quillory-App-1-x"));
  }

  @Test
  public void ofEqualVersionsTheFirstInByteOrderStays() throws IOException {
    assertEquals("A-App-7-x", newestOf("App", "a-App-7-x", "A-App-7-x", "B-App-7-x"));
    assertEquals(
        "Quillory-App-7-complete",
        newestOf("App", "Quillory-App-7-complete.plugin", "Quillory-App-7-complete"));
    assertEquals("Q-App-07-x", newestOf("App", "Q-App-7-x", "Q-App-07-x"));
  }

  @Test
  public void charactersBeyondUffffComeLastInByteOrder() throws IOException {
    // As UTF-8, ef bf bd is below f0 9f 98 80; as chars, fffd is above d83d. Where file names are
    // not UTF-8 the two cannot be told apart.
    if (!"UTF-8".equals(System.getProperty("sun.jnu.encoding"))) {
      return;
    }
    assertEquals("\ufffd-App-7-x", newestOf("App", "\ud83d\ude00-App-7-x", "\ufffd-App-7-x"));
  }

  @Test
  public void aNameWithADashNeverMatches() throws IOException {
    assertNull(newestOf("My-App", "Quillory-My-App-3-complete"));
  }

  @Test
  public void otherNamesAndTemporaryFoldersAreLeftOut() throws IOException {
    assertNull(
        newestOf("App", "Quillory-Other-3-complete", "QuilloryTemp-1700000000-4-app", "App", "a"));
  }

  @Test
  public void aFolderWithoutAThirdDashIsNeverChosen() throws IOException {
    assertNull(newestOf("App", "Quillory-App-5"));
    assertEquals("Q-App-0-x", newestOf("App", "Quillory-App-5", "Q-App-0-x"));
  }

  @Test
  public void aVersionThatIsNoNumberIsZero() throws IOException {
    assertEquals("Q-App-beta-x", newestOf("App", "Q-App-beta-x"));
    assertEquals("Q-App-1-x", newestOf("App", "Q-App-beta-x", "Q-App-1-x"));
  }

  @Test
  public void aMissingMasterFolderHasNone() {
    assertNull(VersionFolders.newest(new File(folder.getRoot(), "none"), "App"));
  }
}
