package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;

import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class TrialsTest {
  @Rule public TemporaryFolder place = new TemporaryFolder();

  private Installation installation;

  @Before
  public void install() throws IOException {
    installation = new Installation(place);
    installation.updates.mkdir();
  }

  private Trials read() {
    return Trials.read(installation.updates);
  }

  private List<String> blocked() {
    List<String> names = new ArrayList<String>();
    read().addBlocked(installation.master, names);
    return names;
  }

  private void block(File folder) throws IOException {
    Trials trials = read();
    trials.noteBad(folder);
    trials.noteBad(folder);
    trials.save();
  }

  @Test
  public void whatIsSavedIsReadAgain() throws IOException {
    Trials trials = read();
    File one = installation.version(1, "abc");
    File two = installation.version(2);
    trials.noteGood(one);
    trials.noteBad(two);
    trials.save();
    assertEquals(
        "1\0" + "2\0Quillory-Demo-1-complete\0abc\0" + "0\0GOOD\0"
            + "Quillory-Demo-2-complete\0\0" + "1\0UNKNOWN\0",
        installation.trials());
    assertEquals("GOOD", read().stateOf(one));
    assertEquals("UNKNOWN", read().stateOf(two));
    assertEquals(1, installation.updates.list().length);
  }

  @Test
  public void nothingIsWrittenWhereNothingHasChanged() throws IOException {
    read().save();
    assertFalse(new File(installation.updates, "trials").exists());
  }

  @Test
  public void anArchiveIsBlockedAndNotItsNumber() throws IOException {
    File two = installation.version(2, "abc");
    block(two);
    assertEquals(Arrays.asList(two.getName()), blocked());
    installation.version(2, "def");
    assertEquals(new ArrayList<String>(), blocked());
    assertEquals("UNKNOWN", read().stateOf(two));
    assertEquals(false, read().knows(two));
  }

  @Test
  public void versionsThatAreGoneAreForgottenButForBlockedOnes() throws IOException {
    File gone = new File(installation.master, "Quillory-Demo-1-complete");
    File bad = installation.version(2);
    Trials trials = read();
    trials.noteGood(gone);
    trials.noteBad(bad);
    trials.noteBad(bad);
    bad.delete();
    trials.noteGood(installation.version(3));
    trials.save();
    assertEquals(
        "1\0" + "2\0Quillory-Demo-2-complete\0\0" + "2\0BLOCKED\0"
            + "Quillory-Demo-3-complete\0\0" + "0\0GOOD\0",
        installation.trials());
  }

  @Test
  public void aBlockedVersionIsToldOnce() throws IOException {
    File two = installation.version(2);
    block(two);
    Trials trials = read();
    assertEquals(Arrays.asList(two.getName()), trials.takeUntold());
    trials.save();
    assertEquals(new ArrayList<String>(), read().takeUntold());
    assertEquals(Arrays.asList(two.getName()), blocked());
  }

  /** The bytes of the page's example: behind an offset, between two runs of spaces. */
  private static byte[] pageExample() throws IOException {
    String page = Installation.read(new File(System.getProperty("test.docs"), "update-trials.md"));
    String example = page.split("```hexdump\n")[1].split("```")[0];
    ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    for (String line : example.split("\n")) {
      String[] parts = line.split(" {2,}");
      assertEquals(line, Integer.parseInt(parts[0]), bytes.size());
      for (String number : parts[1].split(" ")) {
        bytes.write(Integer.parseInt(number, 16));
      }
    }
    return bytes.toByteArray();
  }

  @Test
  public void theExampleOfThePageIsRead() throws IOException {
    Files.write(new File(installation.updates, "trials").toPath(), pageExample());
    assertEquals("GOOD", read().stateOf(installation.version(1)));
    assertEquals("TOLD", read().stateOf(installation.version(2, "abcd")));
    assertEquals(Arrays.asList("Quillory-Demo-2-complete"), blocked());
  }

  @Test
  public void damagedFilesSayWhatTheyCan() throws IOException {
    File file = new File(installation.updates, "trials");
    File one = installation.version(1);
    String whole = "1\0" + "1\0" + one.getName() + "\0\0" + "0\0GOOD\0";
    for (int length = 0; length < whole.length() - 5; length++) {
      Installation.write(file, whole.substring(0, length));
      assertEquals("cut at " + length, "UNKNOWN", read().stateOf(one));
    }
    Installation.write(file, "2" + whole.substring(1));
    assertEquals("another format", "UNKNOWN", read().stateOf(one));
    Installation.write(file, "1\0" + "9223372036854775807\0" + one.getName() + "\0\0" + "0\0GOOD\0");
    read();
    Installation.write(file, "1\0" + "-3\0");
    assertFalse(read().knows(one));
  }
}
