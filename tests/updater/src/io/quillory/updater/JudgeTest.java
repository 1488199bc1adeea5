package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class JudgeTest {
  private static final String TWO = "Quillory-Demo-2-complete";

  @Rule public TemporaryFolder place = new TemporaryFolder();

  private Installation installation;
  private File two;

  @Before
  public void install() throws IOException {
    installation = new Installation(place);
    two = installation.version(2);
    installation.updates.mkdir();
  }

  private Trials judge() throws IOException {
    Trials trials = Trials.read(installation.updates);
    Judge.judge(installation.updates, installation.master, installation.updates.list(), trials);
    return trials;
  }

  /** What the trials say after one start that left these lines behind the folder's name. */
  private String trialsAfter(String... lines) throws IOException {
    String[] all = new String[lines.length + 1];
    all[0] = TWO;
    System.arraycopy(lines, 0, all, 1, lines.length);
    File file = installation.attempt("1-1", all);
    judge();
    assertFalse("a start is judged once", file.exists());
    String trials = installation.trials();
    new File(installation.updates, "trials").delete();
    return trials;
  }

  private static String trial(int tries, String state) {
    return "1\0" + "1\0" + TWO + "\0\0" + tries + '\0' + state + '\0';
  }

  @Test
  public void aVersionIsGoodThatSaidSoOrEndedWell() throws IOException {
    assertEquals(trial(0, "GOOD"), trialsAfter("closed", "ended 0"));
    assertEquals(trial(0, "GOOD"), trialsAfter("healthy"));
    assertEquals(trial(0, "GOOD"), trialsAfter("lasted", "healthy", "ended 3"));
  }

  @Test
  public void aStartThatItsUserEndedShowsNothing() throws IOException {
    for (String status : new String[] {"129", "130", "143"}) {
      assertEquals(trial(0, "UNKNOWN"), trialsAfter("ended " + status));
    }
    assertEquals(trial(0, "UNKNOWN"), trialsAfter("neutral", "ended 1"));
    assertEquals(trial(0, "UNKNOWN"), trialsAfter("neutral", "closed", "ended 0"));
    assertEquals("nobody knows how", trial(0, "UNKNOWN"), trialsAfter("closed"));
    assertEquals("killed, or a power cut", trial(0, "UNKNOWN"), trialsAfter("lasted"));
  }

  @Test
  public void aStartThatFailedOrDisappearedEarlyIsBad() throws IOException {
    assertEquals(trial(1, "UNKNOWN"), trialsAfter());
    assertEquals(trial(1, "UNKNOWN"), trialsAfter("ended 1"));
    assertEquals(trial(1, "UNKNOWN"), trialsAfter("closed", "ended 1"));
    assertEquals(trial(1, "UNKNOWN"), trialsAfter("lasted", "ended 134"));
    assertEquals("no number", trial(1, "UNKNOWN"), trialsAfter("ended "));
  }

  @Test
  public void twoBadStartsBlockAVersionThatWasNeverGood() throws IOException {
    installation.attempt("1-1", TWO, "ended 1");
    installation.attempt("2-1", TWO, "ended 143");
    installation.attempt("3-1", TWO);
    judge();
    assertEquals(trial(2, "BLOCKED"), installation.trials());
  }

  @Test
  public void aVersionThatWasGoodStaysGood() throws IOException {
    installation.attempt("1-1", TWO, "ended 0");
    judge();
    for (int i = 2; i < 5; i++) {
      installation.attempt(i + "-1", TWO, "ended 1");
    }
    judge();
    assertEquals(trial(0, "GOOD"), installation.trials());
  }

  @Test
  public void aBlockedVersionThatProvesItselfIsGood() throws IOException {
    installation.attempt("1-1", TWO, "ended 1");
    installation.attempt("2-1", TWO, "ended 1");
    judge();
    installation.attempt("3-1", TWO, "healthy");
    judge();
    assertEquals(trial(2, "GOOD"), installation.trials());
  }

  @Test
  public void aStartThatStillRunsIsNotJudgedButWhereItIsHealthy() throws Exception {
    File silent = installation.attempt("1-1", TWO);
    File healthy = installation.attempt("2-1", "Quillory-Demo-3-complete", "healthy");
    installation.version(3);
    // A lock is the process's, so another one has to hold them.
    Process other =
        new ProcessBuilder(
                System.getProperty("java.home") + "/bin/java", "-cp",
                System.getProperty("java.class.path"), "io.quillory.updater.JudgeTest",
                silent.getPath(), healthy.getPath())
            .start();
    try {
      assertEquals('!', other.getInputStream().read());
      Trials trials = judge();
      assertFalse(trials.knows(two));
      assertEquals(
          "1\0" + "1\0Quillory-Demo-3-complete\0\0" + "0\0GOOD\0", installation.trials());
      assertTrue(silent.exists());
      assertFalse(healthy.exists());
    } finally {
      other.destroyForcibly().waitFor();
    }
    judge();
    assertFalse("it has ended, and nobody knows how", silent.exists());
    assertEquals(1, countOf(installation.trials(), TWO + "\0\0" + "1\0UNKNOWN"));
  }

  private static int countOf(String text, String part) {
    return text.split(java.util.regex.Pattern.quote(part), -1).length - 1;
  }

  /** Locks the files and says so, for as long as it lives. */
  public static void main(String[] files) throws Exception {
    for (String file : files) {
      new RandomAccessFile(file, "rw").getChannel().lock();
    }
    System.out.print('!');
    System.out.flush();
    System.in.read();
  }

  @Test
  public void whatIsNoStartIsLeftAlone() throws IOException {
    new File(installation.updates, "try-folder").mkdir();
    File other = new File(installation.updates, "state");
    Installation.write(other, "1\0");
    judge();
    assertTrue(new File(installation.updates, "try-folder").exists());
    assertTrue(other.exists());
  }

  @Test
  public void aFileThatNamesNoVersionSaysNothing() throws IOException {
    for (String name : new String[] {"", "..", ".hidden", "a/b"}) {
      File file = installation.attempt("1-1", name, "ended 1");
      judge();
      assertFalse(file.exists());
      assertFalse(new File(installation.updates, "trials").exists());
    }
    Installation.write(new File(installation.updates, "try-2-1"), TWO); // Cut before its line end.
    judge();
    assertFalse(new File(installation.updates, "trials").exists());
  }

  @Test
  public void nothingIsLostWhereTheFolderCannotBeWrittenTo() throws IOException {
    File file = installation.attempt("1-1", TWO, "ended 1");
    // A folder in the place of the file: written to by nobody, not even by the administrator.
    new File(new File(installation.updates, "trials"), "x").mkdirs();
    try {
      judge();
      assertTrue("expected a failure", false);
    } catch (IOException e) {
      assertTrue(file.exists());
    }
  }
}
