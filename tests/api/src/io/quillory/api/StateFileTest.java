package io.quillory.api;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;

import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class StateFileTest {
  private static final String BEFORE = "1\0" + "7\0draw\0" + "100\0" + "90\0etag\0" + "1\0key\0";
  private static final String OFFER = "7\0" + "2\0" + "1.2\0" + "360000\0" + "1\0# New\n- all\0";

  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private StateFile read(String content) throws IOException {
    Files.write(
        new File(folder.getRoot(), "state").toPath(), content.getBytes(StandardCharsets.UTF_8));
    return StateFile.read(folder.getRoot());
  }

  @Test
  public void whatIsOfferedIsKnownWithItsNotes() throws IOException {
    StateFile file = read(BEFORE + "AVAILABLE\0\0" + OFFER);
    assertEquals(UpdateState.Phase.AVAILABLE, file.state.phase());
    assertEquals(7, file.offer.number());
    assertEquals("2", file.offer.version());
    assertEquals("1.2", file.offer.shownVersion());
    assertEquals(360000, file.offer.size());
    assertTrue(file.offer.isCritical());
    assertEquals("# New\n- all", file.offer.notes());
  }

  @Test
  public void aFailureHasItsReasonAndAFreezeItsTime() throws IOException {
    StateFile failed = read(BEFORE + "FAILED\0no space left\0" + "0\0\0\0" + "0\0" + "0\0\0");
    assertEquals(UpdateState.Phase.FAILED, failed.state.phase());
    assertEquals("no space left", failed.state.reason());
    assertEquals(0, failed.state.since());
    assertNull(failed.offer);
    assertEquals(90_000, read(BEFORE + "FROZEN\0\0" + "0\0").state.since());
  }

  @Test
  public void whatCannotBeReadSaysNothing() throws IOException {
    assertEquals(UpdateState.NOTHING, StateFile.read(new File(folder.getRoot(), "none")).state);
    assertEquals(UpdateState.NOTHING, read("2" + BEFORE.substring(1) + "FAILED\0").state);
    assertEquals(UpdateState.NOTHING, read(BEFORE + "LATER\0\0" + "0\0").state);
    assertEquals(UpdateState.NOTHING, read(BEFORE.replace("1\0key", "9223372036854775807\0")).state);
  }

  @Test
  public void aFileThatIsCutEndsWhereItEnds() throws IOException {
    String whole = BEFORE + "AVAILABLE\0\0" + OFFER;
    for (int length = 0; length < whole.length(); length++) {
      StateFile file = read(whole.substring(0, length));
      assertFalse(file.state.phase() == UpdateState.Phase.FAILED);
    }
  }
}
