package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertTrue;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Properties;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class CompanionTest {
  private static final long HOUR = 3600;

  @Rule public TemporaryFolder place = new TemporaryFolder();

  private final Properties before = (Properties) System.getProperties().clone();
  private Installation installation;

  /** A machine whose time passes while somebody sleeps, until it is over. */
  private static final class Scripted extends Companion.Surroundings {
    private final long end;
    private final long windowAt;
    long millis;
    int looks;
    double draw = 0.5;
    boolean isToolkitThere = true;
    final List<Long> startedAt = new ArrayList<Long>();
    List<String> command;
    /** What each program comes to; null: it could not be started. */
    Process process;

    /** Seconds; a window at the second {@code windowAt}, or never where that is negative. */
    Scripted(long end, long windowAt) {
      this.end = end * 1000;
      this.windowAt = windowAt * 1000;
    }

    @Override
    long millis() {
      return millis;
    }

    @Override
    void sleep(long pause) throws InterruptedException {
      assertTrue(pause > 0);
      millis += pause;
      if (millis > end) {
        throw new InterruptedException();
      }
    }

    @Override
    boolean isWindowShown() {
      looks++;
      return windowAt >= 0 && millis >= windowAt;
    }

    @Override
    boolean isToolkitThere() {
      return isToolkitThere;
    }

    @Override
    double draw() {
      return draw;
    }

    @Override
    Process start(List<String> command) {
      this.command = command;
      startedAt.add(millis / 1000);
      return process;
    }
  }

  @Before
  public void install() throws IOException {
    Main.administratorsFolder = place.newFolder("administrator's");
    installation = new Installation(place);
    installation.settings(Installation.SETTINGS);
    installation.version(1);
    installation.program("quillory-update", "");
  }

  @After
  public void leave() {
    System.setProperties(before);
  }

  private Updates begun() throws IOException {
    installation.beginStart();
    Main start = installation.start();
    start.begin();
    return start.updates();
  }

  private Updates watch(Scripted machine) throws IOException {
    Updates updates = begun();
    try {
      new Companion(updates, machine).run();
    } catch (InterruptedException e) {
      // The time that the test has is over.
    }
    return updates;
  }

  private static List<String> notes(Updates updates) throws IOException {
    String[] lines = Installation.read(updates.attempt.file).split("\n");
    return Arrays.asList(lines).subList(1, lines.length);
  }

  @Test
  public void aVersionIsGoodTwentySecondsAfterItsFirstWindow() throws IOException {
    assertEquals(Arrays.asList(), notes(watch(new Scripted(19, 2))));
    assertEquals(Arrays.asList("lasted"), notes(watch(new Scripted(21, 2))));
    assertEquals(Arrays.asList("lasted", "healthy"), notes(watch(new Scripted(22, 2))));
    installation.version(2);
    assertEquals(Arrays.asList("lasted", "healthy"), notes(watch(new Scripted(500, 300))));
  }

  @Test
  public void withoutAWindowAStartOnlyLasts() throws IOException {
    assertEquals(Arrays.asList("lasted"), notes(watch(new Scripted(100 * HOUR, -1))));
  }

  @Test
  public void anApplicationThatShowsNoWindowIsGoodAfterTenMinutes() throws IOException {
    for (int seconds : new int[] {599, 615}) {
      Scripted machine = new Scripted(seconds, -1);
      machine.isToolkitThere = false;
      List<String> expected =
          seconds < 600 ? Arrays.asList("lasted") : Arrays.asList("lasted", "healthy");
      assertEquals(expected, notes(watch(machine)));
    }
  }

  @Test
  public void theFirstCheckComesSomeSecondsAfterTheFirstWindow() throws IOException {
    Scripted machine = new Scripted(HOUR, 3);
    watch(machine);
    assertEquals(Arrays.asList(8L), machine.startedAt);
    machine = new Scripted(HOUR, 9);
    watch(machine);
    assertEquals(Arrays.asList(14L), machine.startedAt);
  }

  @Test
  public void withoutAWindowItComesAfterTenSeconds() throws IOException {
    for (int windowAt : new int[] {-1, 30}) {
      Scripted machine = new Scripted(HOUR, windowAt);
      watch(machine);
      assertEquals(Arrays.asList(10L), machine.startedAt);
    }
  }

  @Test
  public void theNextOnesAreSpreadAroundTheHoursOfTheSettings() throws IOException {
    double[] draws = {0, 0.5, 1};
    double[] hours = {19.2, 24, 28.8};
    for (int i = 0; i < draws.length; i++) {
      Scripted machine = new Scripted(50 * HOUR, 5);
      machine.draw = draws[i];
      watch(machine);
      long second = (long) (10 + hours[i] * HOUR);
      long third = (long) (10 + 2 * hours[i] * HOUR);
      List<Long> expected = new ArrayList<Long>(Arrays.asList(10L, second));
      if (third <= 50 * HOUR) {
        expected.add(third);
      }
      assertEquals(expected, machine.startedAt);
    }
  }

  @Test
  public void atRestItLooksAtNothing() throws IOException {
    installation.attempt("1-1", "Quillory-Demo-1-complete", "ended 0");
    Scripted machine = new Scripted(23 * HOUR, -1);
    watch(machine);
    assertTrue("looks: " + machine.looks, machine.looks < 150);
  }

  @Test
  public void theProgramIsToldWhereEverythingIs() throws IOException {
    Scripted machine = new Scripted(60, -1);
    watch(machine);
    assertEquals(
        Arrays.asList(
            installation.updater + "/quillory-update", "background", "--properties",
            installation.properties.getPath(), "--own-folder", installation.master.getPath()),
        machine.command);
  }

  @Test
  public void itIsStartedInTheModesThatAskForIt() throws IOException {
    String[] modes = {"background", "ask", "at-start", "manual", "off", "other"};
    int[] starts = {2, 2, 1, 0, 0, 0};
    for (int i = 0; i < modes.length; i++) {
      installation.settings("1\0stable\0" + modes[i] + "\0" + "20\0" + "24\0");
      Scripted machine = new Scripted(30 * HOUR, 1);
      watch(machine);
      assertEquals(modes[i], starts[i], machine.startedAt.size());
    }
  }

  /** What was started behind the first window, with programs that end at once. */
  private Scripted watchInMode(String mode) throws Exception {
    installation.settings("1\0stable\0" + mode + "\0" + "20\0" + "24\0");
    installation.program("quillory-update-window", "");
    Scripted machine = new Scripted(60, 1);
    machine.process = new ProcessBuilder("true").start();
    machine.process.waitFor();
    watch(machine);
    return machine;
  }

  @Test
  public void inTheModeAskAWindowAsksBehindACheck() throws Exception {
    Scripted machine = watchInMode("ask");
    assertEquals(Arrays.asList(6L, 6L), machine.startedAt);
    assertEquals(
        Arrays.asList(
            installation.updater + "/quillory-update-window", "--ask", "--properties",
            installation.properties.getPath(), "--own-folder", installation.master.getPath()),
        machine.command);
  }

  @Test
  public void noWindowAsksWhereTheApplicationDoesOrNobodyShall() throws Exception {
    assertEquals(1, watchInMode("background").startedAt.size());
    System.setProperty("quillory.update.listener", "true");
    assertEquals(1, watchInMode("ask").startedAt.size());
  }

  @Test
  public void aProgramThatIsNotThereIsNotStarted() throws IOException {
    new File(installation.updater, "quillory-update").delete();
    Scripted machine = new Scripted(HOUR, 1);
    watch(machine);
    assertEquals(0, machine.startedAt.size());
  }

  @Test
  public void theVersionThatRunsIsHeldAgainstOtherProcesses() throws Exception {
    watch(new Scripted(2, -1));
    assertTrue(isHeld("Quillory-Demo-1-complete"));
  }

  @Test
  public void itsUpdaterIsHeldToo() throws Exception {
    watch(new Scripted(2, -1));
    assertTrue(isHeld(installation.updater.getName()));
  }

  /** As quillory-update asks: not for a lock that was taken by itself. */
  private boolean isHeld(String folder) throws Exception {
    File hold = new File(installation.updates, "holds/" + folder);
    String ask = "import fcntl,sys; fcntl.lockf(open(sys.argv[1],'r+'), fcntl.LOCK_EX|fcntl.LOCK_NB)";
    return new ProcessBuilder("python3", "-B", "-c", ask, hold.getPath()).start().waitFor() == 1
        && hold.exists();
  }

  @Test
  public void aRuntimeIsKnownByItsFolder() throws Exception {
    File master = installation.updater.getParentFile();
    File home = new File(master, "Quillory-JRE-17-complete/inner");
    assertTrue(home.mkdirs());
    assertEquals("Quillory-JRE-17-complete", Companion.folderIn(master, home.getPath()));
    assertEquals(null, Companion.folderIn(master, "/usr/lib/jvm"));
  }
}
