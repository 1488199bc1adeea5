package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Set;

/**
 * The chosen version in a JVM of its own, for a start whose JVM has begun with another one on its
 * class path: the first start of an online installation, or one right after a bad version. The
 * updater runs there, too, and does not choose again. So that the next start begins with the right
 * one, the launcher is told which versions it is to pass over.
 */
final class OwnProcess {
  private static final String PASSED_OVER = "quillory.passed.over";
  private static final String PASSED_OVER_OPTION = "-D" + PASSED_OVER + '=';
  private static final String OWN_PROPERTIES = "quillory.";
  private static final String BUNDLE = ".plugin";

  private OwnProcess() {}

  /**
   * Runs the updater for {@code folder} and returns the status that its process has ended with; -1
   * where there is no program {@code java}, or it cannot be started.
   *
   * @param arguments those of this updater, the path of the launch properties first
   */
  static int run(File folder, LaunchFile launchFile, File updaterFolder, String[] arguments)
      throws IOException {
    File java = new File(System.getProperty("java.home"), "bin/java");
    if (!java.canExecute()) {
      return -1;
    }
    List<String> command = new ArrayList<String>();
    command.add(java.getPath());
    addOptions(folder, launchFile, command);
    String paths = classPath(folder, launchFile.classPath);
    String module = launchFile.module();
    if (module != null) {
      command.add("--module-path=" + paths);
      command.add("--add-modules=" + module);
    }
    command.add("-cp");
    command.add(
        classPath(updaterFolder, LaunchFile.read(updaterFolder).classPath)
            + (module == null ? paths : ""));
    command.add(Main.class.getName());
    Collections.addAll(command, arguments);
    Process process;
    try {
      process = new ProcessBuilder(command).inheritIO().start();
    } catch (IOException e) {
      return -1;
    }
    while (true) {
      try {
        return process.waitFor();
      } catch (InterruptedException e) {
        // It is the application that ends this start.
      }
    }
  }

  private static void addOptions(File folder, LaunchFile launchFile, List<String> command) {
    if (launchFile.maximumHeap >= 1) {
      command.add("-Xmx" + launchFile.maximumHeap + "m");
    }
    if (launchFile.initialHeap >= 1) {
      command.add("-Xms" + launchFile.initialHeap + "m");
    }
    Set<String> names = System.getProperties().stringPropertyNames();
    for (String name : names) {
      // An archive would be of the version that this JVM has begun with.
      if (name.startsWith(OWN_PROPERTIES)
          && !name.startsWith("quillory.archive.")
          && !name.equals(Application.ON_CLASS_PATH)) {
        command.add("-D" + name + '=' + System.getProperty(name));
      }
    }
    command.add("-D" + Application.ON_CLASS_PATH + '=' + folder.getPath());
    command.add("-D" + Application.CHOSEN + '=' + folder.getPath());
    File libraries = new File(folder, LaunchFile.NATIVE_FOLDER);
    if (libraries.isDirectory()) {
      command.add(
          "-Djava.library.path="
              + libraries.getPath()
              + File.pathSeparator
              + System.getProperty("java.library.path"));
    }
    launchFile.addOptionsOfJvm(command);
  }

  private static String classPath(File folder, List<String> entries) {
    StringBuilder text = new StringBuilder();
    for (String entry : entries) {
      text.append(new File(folder, entry).getPath()).append(File.pathSeparator);
    }
    return text.toString();
  }

  /**
   * Has the launcher pass over, from the next start on, what the choice has passed over: as one of
   * the options that it remembers for the runtime. Best effort: without it the next start runs in
   * two processes, too.
   */
  static void remember(File ownFolder, File master) {
    try {
      String runtime = Companion.folderIn(master, System.getProperty("java.home"));
      if (runtime != null) {
        remember(ownFolder, runtime, System.getProperty(PASSED_OVER));
      }
    } catch (IOException e) {
      // As it says above.
    }
  }

  /** For a runtime's folder or its bundle; {@code names} is null where nothing is passed over. */
  static void remember(File ownFolder, String runtime, String names) throws IOException {
    boolean isBundle = runtime.endsWith(BUNDLE);
    String name = isBundle ? runtime.substring(0, runtime.length() - BUNDLE.length()) : runtime;
    File folder = new File(ownFolder, "QYApps");
    File file = new File(folder, "JRE-LastSuccessfulOptions-" + name);
    List<String> options = optionsOfOthers(file);
    if (names != null) {
      options.add(PASSED_OVER_OPTION + names);
    }
    if (options.isEmpty()) {
      file.delete();
    } else if (folder.isDirectory() || folder.mkdir()) {
      StringBuilder text = new StringBuilder();
      text.append(options.size()).append('\0');
      for (String option : options) {
        text.append(option).append('\0');
      }
      SyncedFile.replace(file, text.toString());
    }
  }

  private static List<String> optionsOfOthers(File file) throws IOException {
    List<String> options = new ArrayList<String>();
    if (!file.isFile()) {
      return options;
    }
    Records records = Records.of(file);
    for (long left = records.nextNumber(); left > 0 && !records.isAtEnd(); left--) {
      String option = records.next();
      if (!option.startsWith(PASSED_OVER_OPTION)) {
        options.add(option);
      }
    }
    return options;
  }
}
