package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * What goes on behind a running application: it is watched until its version is known to be good,
 * its folder is held, and quillory-update is started some seconds after the first window, and then
 * every so many hours. In the mode "ask" a window asks behind each of these runs, unless the
 * application itself listens for updates.
 */
final class Companion {
  /** What tests replace: the time, and what is asked of the machine. */
  static class Surroundings {
    long millis() {
      return System.nanoTime() / 1_000_000;
    }

    void sleep(long millis) throws InterruptedException {
      Thread.sleep(millis);
    }

    boolean isWindowShown() {
      return ShownWindows.areThere();
    }

    /** Whether a window would be known. */
    boolean isToolkitThere() {
      return ShownWindows.canBeThere();
    }

    /** Evenly between 0 and 1. */
    double draw() {
      return Math.random();
    }

    /** Null where it cannot be started. */
    Process start(List<String> command) {
      File nothing = new File("/dev/null");
      try {
        return new ProcessBuilder(command)
            .redirectInput(nothing)
            .redirectOutput(nothing)
            .redirectError(nothing)
            .start();
      } catch (IOException e) {
        return null; // quillory-update has gone with an older updater.
      }
    }
  }

  private static final long SECOND = 1000;
  private static final long HOUR = 3600 * SECOND;
  /** A start that goes on for so long has not failed early. */
  private static final long EARLY = 20 * SECOND;
  private static final long FROM_WINDOW_TO_HEALTHY = 20 * SECOND;
  /** So long, that an application without windows of a known kind does what it is for. */
  private static final long FROM_START_TO_HEALTHY = 600 * SECOND;
  private static final long FROM_WINDOW_TO_CHECK = 5 * SECOND;
  private static final long FROM_START_TO_CHECK = 10 * SECOND;
  private static final double SPREAD = 0.2;
  private static final long LOOKS_OFTEN_FOR = 60 * SECOND;
  private static final long SHORT_PAUSE = SECOND / 2;
  private static final long LONG_PAUSE = 10 * SECOND;
  private static final long NEVER = Long.MAX_VALUE;
  /** Set by quillory-api.jar, where an application listens for updates. */
  private static final String ASKS_ITSELF = "quillory.update.listener";

  /** Until the process ends. */
  private static final List<RandomAccessFile> HELD = new ArrayList<RandomAccessFile>();

  private final Updates updates;
  private final Surroundings around;
  private final File program;
  private final boolean isChecking;
  /** The window that asks; null in modes that do not. */
  private final File asking;

  private long begin;
  private long window = NEVER;
  private long nextCheck;
  private boolean hasLasted;
  private boolean isSettled;
  private Process running;

  Companion(Updates updates, Surroundings around) {
    this.updates = updates;
    this.around = around;
    program = updates.program("quillory-update");
    UpdateSettings settings = updates.settings();
    isChecking =
        program != null
            && (settings.is(UpdateSettings.BACKGROUND)
                || settings.is(UpdateSettings.ASK)
                || settings.is(UpdateSettings.AT_START));
    asking = settings.is(UpdateSettings.ASK) ? updates.program("quillory-update-window") : null;
    isSettled = updates.attempt == null;
  }

  /** Until there is nothing left to be done, or somebody ends all threads. */
  static void accompany(Updates updates) {
    try {
      new Companion(updates, new Surroundings()).run();
    } catch (InterruptedException e) {
      // Then so be it.
    }
  }

  /** Returns when there is nothing left to be done, or does not while checks go on. */
  void run() throws InterruptedException {
    begin = around.millis();
    hold();
    // A start that has waited for its update has just asked.
    nextCheck =
        !isChecking ? NEVER
            : updates.settings().is(UpdateSettings.AT_START) ? begin + untilNextCheck()
            : begin + FROM_START_TO_CHECK;
    while (!isSettled || isChecking) {
      long now = around.millis();
      lookForWindow(now);
      noteHealth(now);
      if (asking != null && running != null && !running.isAlive()) {
        running = null;
        ask();
      }
      if (now >= nextCheck) {
        check();
        nextCheck = now + untilNextCheck();
      }
      around.sleep(pause(now));
    }
  }

  private void lookForWindow(long now) {
    if (window != NEVER || !around.isWindowShown()) {
      return;
    }
    window = now;
    if (nextCheck == begin + FROM_START_TO_CHECK) {
      nextCheck = now + FROM_WINDOW_TO_CHECK;
    }
  }

  private void noteHealth(long now) {
    if (isSettled) {
      return;
    }
    if (!hasLasted && now - begin >= EARLY) {
      hasLasted = true;
      note(Attempt.LASTED);
    }
    if (isHealthy(now)) {
      isSettled = true;
      note(Attempt.HEALTHY);
    }
  }

  private boolean isHealthy(long now) {
    if (window != NEVER) {
      return now - window >= FROM_WINDOW_TO_HEALTHY;
    }
    // With a toolkit that shows nothing for so long it may as well hang.
    return now - begin >= FROM_START_TO_HEALTHY && !around.isToolkitThere();
  }

  private void note(String line) {
    try {
      updates.attempt.note(line);
    } catch (IOException e) {
      // A full disk: the end of the process may still say it.
    }
  }

  private long pause(long now) {
    if (asking != null && running != null) {
      return SHORT_PAUSE;
    }
    boolean isWaiting = !isSettled || window == NEVER;
    if (isWaiting && now - begin < LOOKS_OFTEN_FOR) {
      return SHORT_PAUSE;
    }
    return isSettled ? Math.max(nextCheck - now, SHORT_PAUSE) : LONG_PAUSE;
  }

  private long untilNextCheck() {
    long hours = Math.max(updates.settings().checkHours, 1);
    return (long) (hours * HOUR * (1 - SPREAD + 2 * SPREAD * around.draw()));
  }

  private void check() {
    if (running != null && running.isAlive()) {
      return; // It loads something large.
    }
    running = around.start(command(program, "background"));
  }

  /** What is asked, if anything, the window knows. */
  private void ask() {
    if (System.getProperty(ASKS_ITSELF) == null) {
      around.start(command(asking, "--ask"));
    }
  }

  private List<String> command(File program, String what) {
    // It knows what to do when a later start has cleared the properties away.
    return Arrays.asList(
        program.getPath(), what, "--properties", updates.propertiesFile.getPath(),
        "--own-folder", updates.folder.getParent());
  }

  /** What runs is not deleted, updater and runtime included: others ask for these locks before. */
  private void hold() {
    File folder = new File(updates.folder, "holds");
    if (!updates.folder.isDirectory() || !(folder.isDirectory() || folder.mkdir())) {
      return;
    }
    try {
      for (RandomAccessFile earlier : HELD) {
        earlier.close(); // Of an earlier companion in this process, which only a test has.
      }
      HELD.clear();
      hold(new File(folder, updates.chosen.getName()));
      hold(new File(folder, updates.updaterFolder.getName()));
      String runtime = folderIn(updates.updaterFolder.getParentFile(), System.getProperty("java.home"));
      if (runtime != null) {
        hold(new File(folder, runtime));
      }
    } catch (IOException e) {
      // They are the newest ones, which stay anyway.
    }
  }

  private static void hold(File file) throws IOException {
    RandomAccessFile held = new RandomAccessFile(file, "rw");
    HELD.add(held);
    held.getChannel().tryLock(0, Long.MAX_VALUE, true);
  }

  /** The name of the folder in {@code master} that {@code path} is in, links followed; or null. */
  static String folderIn(File master, String path) throws IOException {
    File top = master.getCanonicalFile();
    for (File at = new File(path).getCanonicalFile(); at != null; at = at.getParentFile()) {
      if (top.equals(at.getParentFile())) {
        return at.getName();
      }
    }
    return null;
  }
}
