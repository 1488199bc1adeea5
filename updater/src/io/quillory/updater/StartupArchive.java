package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.locks.LockSupport;

/**
 * A start that uses the application's archive of classes, or that lists the classes for one. Once it
 * is known to be good, by its age or by its end in order, the launcher learns of it, and the archive
 * is made: by another process, which has low priority and goes on when the application ends.
 */
final class StartupArchive extends Thread {
  static final String TRIES = "quillory.archive.tries";
  static final String BASE = "quillory.archive.base";
  private static final String FINGERPRINT = "quillory.archive.fingerprint";
  private static final String LINKED = "quillory.archive.linked";
  private static final long NANOS_UNTIL_GOOD = 20_000_000_000L;
  private static final File NICE = new File("/usr/bin/nice");

  private final boolean isHook;
  private static boolean isSettled;

  private StartupArchive(boolean isHook) {
    super("Quillory archive");
    this.isHook = isHook;
  }

  static void begin() {
    Thread waiting = new StartupArchive(false);
    waiting.setDaemon(true);
    waiting.start();
    Runtime.getRuntime().addShutdownHook(new StartupArchive(true));
  }

  /** A start in which the application does not run here: it says nothing against the archive. */
  static void noteNothing() {
    String tries = System.getProperty(TRIES);
    if (tries != null) {
      new File(tries).delete();
    }
  }

  /** The main class has thrown something: the start was not good, and shows nothing of classes. */
  static synchronized void noteFailure() {
    isSettled = true;
  }

  @Override
  public void run() {
    if (!isHook) {
      LockSupport.parkNanos(NANOS_UNTIL_GOOD);
    }
    settle();
  }

  private static synchronized void settle() {
    if (isSettled) {
      return;
    }
    isSettled = true;
    noteNothing();
    String base = System.getProperty(BASE);
    if (base != null) {
      try {
        startMaker(base, System.getProperty(FINGERPRINT));
      } catch (IOException e) {
        // The next start lists its classes again.
      }
    }
  }

  private static void startMaker(String base, String fingerprint) throws IOException {
    LaunchProperties properties =
        LaunchProperties.read(new File(System.getProperty("quillory.launch.properties")));
    File updaterFolder = new File(properties.get("qystat_app_dir")).getAbsoluteFile();
    File version = new File(System.getProperty(Application.ON_CLASS_PATH));
    String own = pathOf(updaterFolder);
    List<String> command = new ArrayList<String>();
    if (NICE.canExecute()) {
      command.addAll(Arrays.asList(NICE.getPath(), "-n", "19"));
    }
    command.add(new File(System.getProperty("java.home"), "bin/java").getPath());
    command.addAll(Arrays.asList("-cp", own, "io.quillory.updater.ArchiveMaker"));
    command.addAll(
        Arrays.asList(
            base,
            fingerprint,
            own + File.pathSeparator + pathOf(version),
            updaterFolder.getParent(),
            String.valueOf(Boolean.getBoolean(LINKED))));
    File nothing = new File("/dev/null");
    new ProcessBuilder(command)
        .redirectInput(nothing)
        .redirectOutput(nothing)
        .redirectError(nothing)
        .start();
  }

  /** As the launcher has written it into the class path: to the letter. */
  private static String pathOf(File folder) throws IOException {
    StringBuilder text = new StringBuilder();
    for (String entry : LaunchFile.read(folder).classPath) {
      text.append(text.length() == 0 ? "" : File.pathSeparator);
      text.append(folder.getPath()).append('/').append(entry);
    }
    return text.toString();
  }
}
