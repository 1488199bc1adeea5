package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** What a version folder's launch file says about its application. */
final class LaunchFile {
  static final String NAME = "QuilloryLaunch";
  /** Where an application's native libraries lie, in its version folder. */
  static final String NATIVE_FOLDER = "native";

  /** Versions of the file from which there are these records. */
  private static final int WITH_CHECK = 3;

  private static final int WITH_HOOKS = 4;
  private static final int WITH_OPTIONS = 5;

  private static final String PROPERTY = "-D";
  private static final String OWN_OPTIONS = "-Dquillory.";
  private static final String MODULE = "-Dquillory.module=";
  private static final String AGENT = "-Dquillory.agent=";
  private static final String USERS_ARGUMENTS = "-Dquillory.arguments=user";
  private static final String SINGLE_INSTANCE = "-Dquillory.instance=single";

  final String mainClass;
  /** Mebibytes for another JVM than this one, which runs already; below 1 for its own choice. */
  final long maximumHeap;
  final long initialHeap;
  /** Paths relative to the folder of the launch file. */
  final List<String> classPath;
  /** Arguments that the application gets before the user's. */
  final List<String> extraArguments;
  /** What the launcher gives to the JVM where it can, and "-Dquillory..." for the updater. */
  private final List<String> options;

  private LaunchFile(Records records) {
    long version = records.nextNumber();
    mainClass = records.next();
    records.next(); // Class for an update
    records.next(); // Application name
    records.next(); // Icon
    records.next(); // Whether a URL is required
    maximumHeap = records.nextNumber();
    initialHeap = records.nextNumber();
    classPath = group(records);
    extraArguments = group(records);
    if (version >= WITH_CHECK) {
      records.next(); // Compatibility class
    }
    if (version >= WITH_HOOKS) {
      records.next(); // Classes for after an installation and before a removal
      records.next();
    }
    options = version >= WITH_OPTIONS ? group(records) : new ArrayList<String>();
  }

  static LaunchFile read(File folder) throws IOException {
    return new LaunchFile(Records.of(new File(folder, NAME)));
  }

  /**
   * Whether the main class gets the user's arguments alone, as if it had been started by hand. Else
   * the path of the launch properties comes first, which is what applications get that were packed
   * before this could be chosen.
   */
  boolean passesUsersArgumentsOnly() {
    return options.contains(USERS_ARGUMENTS);
  }

  /** The module that the main class is in, or null. */
  String module() {
    return valueOf(MODULE);
  }

  /** The jar, relative to the folder, whose Launcher-Agent-Class comes before the main class. */
  String agent() {
    return valueOf(AGENT);
  }

  private String valueOf(String name) {
    for (String option : options) {
      if (option.startsWith(name)) {
        return option.substring(name.length());
      }
    }
    return null;
  }

  /** Those of a JVM that is still to begin. */
  void addOptionsOfJvm(List<String> command) {
    for (String option : options) {
      if (!option.startsWith(OWN_OPTIONS)) {
        command.add(option);
      }
    }
  }

  /** Whether later starts of the same user hand over to the first one. */
  boolean isSingleInstance() {
    return options.contains(SINGLE_INSTANCE);
  }

  /** Options of another kind come too late: the JVM runs. */
  void setSystemProperties() {
    for (String option : options) {
      int equals = option.indexOf('=');
      if (option.startsWith(PROPERTY) && equals > PROPERTY.length()) {
        System.setProperty(
            option.substring(PROPERTY.length(), equals), option.substring(equals + 1));
      }
    }
  }

  /** A count and that many values, fewer where the file ends earlier. */
  private static List<String> group(Records records) {
    List<String> values = new ArrayList<String>();
    for (long left = records.nextNumber(); left > 0 && !records.isAtEnd(); left--) {
      values.add(records.next());
    }
    return values;
  }
}
