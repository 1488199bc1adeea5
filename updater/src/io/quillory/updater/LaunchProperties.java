package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** The properties that the launcher wrote for this start: keys and values in turn. */
final class LaunchProperties {
  private static final String EMPTY = "\u0004";
  private static final String FILE_PREFIX = "QYLaunchProperties-";
  /** Made by the application through its API, and left behind by one that was killed. */
  private static final String REQUESTS_PREFIX = "QYOpenRequests-";
  /** Read and deleted by the launcher, and left behind by one that was killed. */
  static final String FAILURE_PREFIX = "QYStartFailure-";
  /** A start that is this much older has read its file. */
  private static final long READ_AFTER_MILLIS = 10_000;

  private final List<String> entries = new ArrayList<String>();

  private LaunchProperties(Records records) {
    while (!records.isAtEnd()) {
      entries.add(records.next());
    }
  }

  static LaunchProperties read(File file) throws IOException {
    return new LaunchProperties(Records.of(file));
  }

  /**
   * The value of a key such as "qystat_app_name", or null. A key may be there more than once; the
   * last one counts, because what the launcher works out at the launch stands behind what was
   * shipped.
   */
  String get(String key) {
    String value = null;
    for (int i = 0; i < entries.size(); i += 2) {
      if (entries.get(i).equals(key)) {
        value = i + 1 < entries.size() ? entries.get(i + 1) : "";
      }
    }
    return EMPTY.equals(value) ? "" : value;
  }

  /**
   * Deletes the files of earlier starts beside {@code current}, but for those so young that their
   * application may still have to read them.
   */
  static void deleteEarlierThan(File current) {
    File folder = current.getAbsoluteFile().getParentFile();
    long now = stampOf(current.getName());
    String[] names = folder == null || now < 0 ? null : folder.list();
    if (names == null) {
      return;
    }
    for (String name : names) {
      long stamp = stampOf(name);
      if (stamp >= 0 && stamp < now - READ_AFTER_MILLIS) {
        new File(folder, name).delete(); // Best effort: the next start tries again.
      }
    }
  }

  /**
   * The folder that this user's starts write to. That is the installation's master folder; but where
   * only the administrator writes there, one of the user's own, to which the launcher writes the
   * properties, too.
   */
  static File ownFolderOf(File current, File updaterFolder) {
    File place = current.getAbsoluteFile().getParentFile();
    return place == null || place.equals(updaterFolder) ? updaterFolder.getParentFile() : place;
  }

  /** What tells the file of this start from those of others: "<milliseconds>-<number>". */
  static String stampIn(File current) {
    String name = current.getName();
    return name.startsWith(FILE_PREFIX) ? name.substring(FILE_PREFIX.length()) : name;
  }

  /** The milliseconds in "QYLaunchProperties-<milliseconds>-<number>"; -1 for other names. */
  private static long stampOf(String name) {
    int start =
        name.startsWith(FILE_PREFIX) ? FILE_PREFIX.length()
            : name.startsWith(REQUESTS_PREFIX) ? REQUESTS_PREFIX.length()
            : name.startsWith(FAILURE_PREFIX) ? FAILURE_PREFIX.length()
            : -1;
    if (start < 0) {
      return -1;
    }
    int dash = name.indexOf('-', start);
    if (!isNumber(name, start, dash)
        || !isNumber(name, dash + 1, name.length())) {
      return -1;
    }
    return Records.numberAtStartOf(name.substring(start, dash));
  }

  private static boolean isNumber(String text, int start, int end) {
    for (int i = start; i < end; i++) {
      if (text.charAt(i) < '0' || text.charAt(i) > '9') {
        return false;
      }
    }
    return end > start;
  }
}
