package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.List;

/** The version folders of a master folder, named "Quillory-<name>-<version>-complete". */
final class VersionFolders {
  private static final int SHORTEST_NAME = 3;
  private static final String TRIALS_FORMAT = "1";

  private VersionFolders() {}

  /**
   * The folder of {@code name} with the highest version, or null. Of equal versions it is the one
   * whose name comes first in byte order. A {@code name} that holds a '-' never matches.
   */
  static File newest(File master, String name) {
    return newest(master, name, null);
  }

  /** The same among the folders whose names are not in {@code passedOver}, which may be null. */
  static File newest(File master, String name, List<String> passedOver) {
    String[] folders = master.list();
    if (folders == null) {
      return null;
    }
    String best = null;
    long bestVersion = -1;
    for (String folder : folders) {
      if (folder.length() < SHORTEST_NAME || !isOf(name, folder)) {
        continue;
      }
      if (passedOver != null && passedOver.contains(folder)) {
        continue;
      }
      long version = versionOf(folder);
      boolean isFirstOfEqual =
          best != null && version == bestVersion && compareBytes(folder, best) < 0;
      if (version > bestVersion || isFirstOfEqual) {
        best = folder;
        bestVersion = version;
      }
    }
    return best == null ? null : new File(master, best);
  }

  /**
   * The newest version of {@code name}, where there is nothing to be decided about it; else null.
   * That is when it is known to be good, as all that were ever started, and no start is to be
   * judged; then these looks at three small files are all that a start does about updates.
   */
  static File undisputed(File master, String name, File updateFolder) throws IOException {
    String[] names = updateFolder.list();
    if (names == null) {
      return null;
    }
    for (String entry : names) {
      if (entry.startsWith("try-")) {
        return null;
      }
    }
    File newest = newest(master, name);
    boolean isUsual =
        newest != null && isKnownGood(newest, updateFolder) && isStateUsual(updateFolder);
    return isUsual ? newest : null;
  }

  /** Whether all versions that were ever started were good, this one among them. */
  private static boolean isKnownGood(File version, File updateFolder) throws IOException {
    File file = new File(updateFolder, "trials");
    if (!file.isFile()) {
      return false;
    }
    Records records = Records.of(file);
    if (!records.next().equals(TRIALS_FORMAT)) {
      return false;
    }
    boolean isFound = false;
    for (long left = records.nextNumber(); left > 0 && !records.isAtEnd(); left--) {
      String name = records.next();
      String archive = records.next();
      records.skip(1);
      if (!records.next().equals("GOOD")) {
        return false;
      }
      isFound |= name.equals(version.getName()) && archive.equals(archiveOf(version));
    }
    return isFound;
  }

  /** Whether nothing is withdrawn and nothing critical is offered. */
  private static boolean isStateUsual(File updateFolder) throws IOException {
    File file = new File(updateFolder, Updates.STATE_NAME);
    if (!file.isFile()) {
      return true;
    }
    Records state = Records.of(file);
    if (!state.next().equals(Updates.STATE_FORMAT)) {
      return true; // Of another program; so Choice has it.
    }
    state.skip(Updates.STATE_VALUES_BEFORE_KEYS);
    state.skip(state.nextNumber());
    state.skip(6);
    if (state.nextNumber() != 0) {
      return false;
    }
    state.skip(5);
    return state.nextNumber() == 0;
  }

  /** "" for a version that the launcher has installed from its bundle. */
  static String archiveOf(File version) throws IOException {
    File file = new File(version, "QuilloryArchive");
    // An exception for the usual case would take as long as all the rest.
    return file.isFile() ? Records.of(file).next().trim() : "";
  }

  /** Whether the text between the first and the second '-' is {@code name}. */
  private static boolean isOf(String name, String folder) {
    int first = folder.indexOf('-');
    int second = folder.indexOf('-', first + 1);
    return first >= 0 && second >= 0 && folder.substring(first + 1, second).equals(name);
  }

  /** The text between the second and the third '-', which is the version; "" without a third. */
  static String versionTextOf(String folder) {
    int second = folder.indexOf('-', folder.indexOf('-') + 1);
    int third = folder.indexOf('-', second + 1);
    return third < 0 ? "" : folder.substring(second + 1, third);
  }

  /** The number between the second and the third '-'; -1 without a third. */
  static long versionOf(String folder) {
    int second = folder.indexOf('-', folder.indexOf('-') + 1);
    int third = folder.indexOf('-', second + 1);
    return third < 0 ? -1 : Records.numberAtStartOf(folder.substring(second + 1, third));
  }

  /**
   * The order of the names as UTF-8, in which characters beyond U+FFFF come last. In a String they
   * are surrogates, which have characters above them.
   */
  private static int compareBytes(String a, String b) {
    int length = Math.min(a.length(), b.length());
    for (int i = 0; i < length; i++) {
      char x = a.charAt(i);
      char y = b.charAt(i);
      if (x != y) {
        boolean isBeyond = Character.isSurrogate(x);
        return isBeyond == Character.isSurrogate(y) ? x - y : isBeyond ? 1 : -1;
      }
    }
    return a.length() - b.length();
  }
}
