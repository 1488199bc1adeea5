package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;
import static org.junit.Assert.fail;

import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.IOException;
import java.io.PrintStream;
import java.util.Properties;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class UpdatesTest {
  @Rule public TemporaryFolder place = new TemporaryFolder();

  private final Properties before = (Properties) System.getProperties().clone();
  private final PrintStream realErr = System.err;
  private final ByteArrayOutputStream err = new ByteArrayOutputStream();
  private Installation installation;

  @Before
  public void install() throws IOException {
    Main.administratorsFolder = place.newFolder("administrator's");
    installation = new Installation(place);
    installation.settings(Installation.SETTINGS);
    System.setErr(new PrintStream(err));
  }

  @After
  public void leave() {
    System.setErr(realErr);
    System.setProperties(before);
  }

  private File choice() throws IOException {
    Updates updates = installation.updates();
    return new Choice(updates).make();
  }

  /** A whole start, but for the application. */
  private Updates start() throws IOException {
    installation.beginStart();
    Main start = installation.start();
    start.begin();
    return start.updates();
  }

  private void leaveBadStarts(int version, int times) throws IOException {
    for (int i = 0; i < times; i++) {
      installation.attempt(version + "-" + i, "Quillory-Demo-" + version + "-complete", "ended 1");
    }
  }

  @Test
  public void theNewestVersionIsChosen() throws IOException {
    installation.version(9);
    assertEquals(installation.version(12), choice());
  }

  @Test
  public void aVersionThatFailedTwiceGivesWayToTheOneBefore() throws IOException {
    File one = installation.version(1);
    File two = installation.version(2);
    leaveBadStarts(2, 1);
    assertEquals(two, choice());
    leaveBadStarts(2, 1);
    assertEquals(one, choice());
    assertEquals("for good", one, choice());
    assertEquals("a newer one is another", installation.version(3), choice());
  }

  @Test
  public void withoutAnotherVersionABlockedOneRuns() throws IOException {
    File one = installation.version(1);
    leaveBadStarts(1, 2);
    start();
    assertEquals(one.getPath(), System.getProperty("quillory.version.folder"));
    assertEquals("", err.toString());
    assertNull(System.getProperty("quillory.went.back.from"));
  }

  @Test
  public void ofBlockedVersionsTheNewestRuns() throws IOException {
    installation.version(1);
    File two = installation.version(2);
    leaveBadStarts(1, 2);
    leaveBadStarts(2, 2);
    assertEquals(two, choice());
  }

  @Test
  public void aWithdrawnVersionRunsOnlyWhereThereIsNoOther() throws IOException {
    File one = installation.version(1);
    File two = installation.version(2);
    installation.state("", false, "2", "7");
    assertEquals(one, choice());
    installation.state("", false, "2", "1");
    assertEquals(two, choice());
  }

  @Test
  public void aBlockedVersionRunsBeforeAWithdrawnOne() throws IOException {
    File one = installation.version(1);
    installation.version(2);
    installation.state("", false, "2");
    leaveBadStarts(1, 2);
    assertEquals(one, choice());
  }

  @Test
  public void itIsToldOnceThatAVersionWentBack() throws IOException {
    installation.version(1);
    installation.version(2);
    leaveBadStarts(2, 2);
    start();
    assertEquals(
        "[Updater] Version 2 of \"Demo\" did not start twice and is not tried again. Version 1 is "
            + "started.\n",
        err.toString());
    assertEquals("2", System.getProperty("quillory.went.back.from"));
    start();
    assertEquals(1, err.toString().split("\n").length);
  }

  @Test
  public void theApplicationGetsToKnowWhereEverythingIs() throws IOException {
    File one = installation.version(1);
    installation.program("quillory-update", "");
    Updates updates = start();
    assertEquals(installation.updates.getPath(), System.getProperty("quillory.update.folder"));
    assertEquals(
        installation.updater + "/quillory-update", System.getProperty("quillory.update.program"));
    assertEquals(one.getPath(), System.getProperty("quillory.version.folder"));
    assertEquals("background", System.getProperty("quillory.update.mode"));
    assertEquals(updates.attempt.file.getPath(), System.getProperty("quillory.try.file"));
    assertNull(System.getProperty("quillory.updated.from"));
  }

  @Test
  public void withoutItsProgramNoneIsNamed() throws IOException {
    installation.version(1);
    start();
    assertNull(System.getProperty("quillory.update.program"));
  }

  @Test
  public void aTryIsOnTheDiskBeforeAVersionRunsThatIsNotKnownToBeGood() throws IOException {
    File one = installation.version(1);
    Updates updates = start();
    assertEquals(
        new File(installation.updates, "try-1700000020000-2"), updates.attempt.file);
    assertEquals(one.getName() + '\n', Installation.read(updates.attempt.file));
  }

  @Test
  public void aGoodVersionLeavesNoTry() throws IOException {
    installation.version(1);
    installation.attempt("1-1", "Quillory-Demo-1-complete", "ended 0");
    Updates updates = start();
    assertNull(updates.attempt);
    assertEquals(1, installation.updates.list().length); // The trials.
  }

  @Test
  public void aGoodVersionIsNotStartedUnseenWhereSomethingSpeaksAgainstIt() throws IOException {
    File one = installation.version(1);
    File two = installation.version(2, "abc");
    installation.attempt("1-1", two.getName(), "ended 0");
    assertEquals(two, start().chosen);
    assertNull(start().attempt);

    installation.state("", false, "2");
    assertEquals("withdrawn", one, start().chosen);
    installation.state("", false);
    assertEquals(two, start().chosen);

    installation.version(2, "def");
    assertTrue("of another archive", start().attempt != null);
    installation.version(2, "abc");

    installation.program("quillory-update-window", "touch '" + installation.master + "/said'");
    installation.state("3", true);
    start();
    assertTrue("a critical release", new File(installation.master, "said").exists());
  }

  @Test
  public void whatTheAdministratorSaysHoldsForAGoodVersionToo() throws IOException {
    File one = installation.version(1);
    installation.attempt("1-1", one.getName(), "ended 0");
    start();
    assertEquals("background", System.getProperty("quillory.update.mode"));
    Installation.write(new File(Main.administratorsFolder, "Demo.conf"), "mode = off\n");
    start();
    assertEquals("off", System.getProperty("quillory.update.mode"));
  }

  @Test
  public void theFirstStartOfAVersionKnowsWhichOneWasBefore() throws IOException {
    installation.version(1);
    installation.version(2);
    start();
    assertEquals("1", System.getProperty("quillory.updated.from"));
    System.clearProperty("quillory.updated.from");
    installation.attempt("1-1", "Quillory-Demo-2-complete", "ended 143");
    start();
    assertNull("the second start", System.getProperty("quillory.updated.from"));
  }

  @Test
  public void whereUpdatesAreOffNoFolderIsMade() throws IOException {
    installation.version(1);
    installation.settings("1\0stable\0off\0" + "20\0" + "24\0");
    assertNull(start().attempt);
    assertFalse(installation.updates.exists());
  }

  @Test
  public void nothingThatIsWrongWithTheFolderEndsAStart() throws IOException {
    File one = installation.version(1);
    Installation.write(installation.updates, "a file");
    assertEquals(one, start().chosen);
    installation.updates.delete();
    new File(new File(installation.updates, "trials"), "x").mkdirs();
    new File(installation.updates, "state").mkdir();
    leaveBadStarts(1, 2);
    assertEquals(one, start().chosen);
  }

  @Test
  public void aCriticalReleaseHoldsAStartUntilItIsIn() throws IOException {
    installation.version(1);
    installation.state("2", true);
    installation.program(
        "quillory-update-window",
        "echo \"$@\" > '" + installation.master + "/said'\n"
            + "mkdir '" + installation.master + "/Quillory-Demo-2-complete'");
    assertEquals(new File(installation.master, "Quillory-Demo-2-complete"), choice());
    assertEquals(
        "--update --properties " + installation.properties + " --own-folder "
            + installation.master + '\n',
        Installation.read(new File(installation.master, "said")));
  }

  @Test
  public void aReleaseThatIsNotCriticalOrIsInHoldsNone() throws IOException {
    installation.version(2);
    installation.program("quillory-update-window", "touch '" + installation.master + "/said'");
    installation.state("3", false);
    choice();
    installation.state("2", true);
    choice();
    installation.settings("1\0stable\0off\0" + "20\0" + "24\0");
    installation.state("3", true);
    choice();
    assertFalse(new File(installation.master, "said").exists());
  }

  @Test
  public void atStartIsAsLongAsTheSettingsSay() throws IOException {
    File one = installation.version(1);
    installation.settings("1\0stable\0at-start\0" + "7\0" + "24\0");
    installation.program(
        "quillory-update-window",
        "echo \"$1 $2 $3\" > '" + installation.master + "/said'\nexit 1");
    assertEquals("whatever became of it", one, choice());
    assertEquals(
        "--update --at-most 7\n", Installation.read(new File(installation.master, "said")));
  }

  @Test
  public void withoutAnApplicationOneIsInstalledFirst() throws IOException {
    installation.program(
        "quillory-update-window",
        "[ \"$1\" = --first ] && mkdir '" + installation.master + "/Quillory-Demo-2-complete'");
    assertEquals(new File(installation.master, "Quillory-Demo-2-complete"), choice());
  }

  @Test
  public void whyThereIsNoneIsSaid() throws IOException {
    String[] reasons = {
      "1", "it could not be fetched. The newest log in " + installation.master + "/logs says why.",
      "3", "updates are switched off.",
      "4", "it takes the administrator's rights.",
      "5", "the installation was cancelled.",
    };
    for (int i = 0; i < reasons.length; i += 2) {
      installation.program("quillory-update-window", "exit " + reasons[i]);
      try {
        choice();
        fail("expected a failure");
      } catch (IOException e) {
        assertEquals("No version of \"Demo\" is installed: " + reasons[i + 1], e.getMessage());
      }
    }
    Installation.write(new File(installation.updater, "quillory-update-window"), "#!/none\n");
    try {
      choice();
      fail("expected a failure");
    } catch (IOException e) {
      assertTrue(e.getMessage(), e.getMessage().startsWith("No version of \"Demo\" is installed: "));
    }
  }

  @Test
  public void withoutAProgramThatInstallsThereIsNone() throws IOException {
    assertNull(choice());
  }
}
