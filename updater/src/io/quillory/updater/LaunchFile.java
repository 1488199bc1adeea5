package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** What a version folder's launch file says about its application. */
final class LaunchFile {
  static final String NAME = "QuilloryLaunch";

  final String mainClass;
  /** Paths relative to the folder of the launch file. */
  final List<String> classPath;
  /** Arguments that the application gets before the user's. */
  final List<String> extraArguments;

  private LaunchFile(Records records) {
    records.next(); // The version of the file: what is read here is the same in all of them.
    mainClass = records.next();
    records.next(); // Class for an update
    records.next(); // Application name
    records.next(); // Icon
    records.next(); // Whether a URL is required
    records.next(); // Memory and stack: too late for them, the JVM runs.
    records.next();
    classPath = group(records);
    extraArguments = group(records);
  }

  static LaunchFile read(File folder) throws IOException {
    return new LaunchFile(Records.of(new File(folder, NAME)));
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
