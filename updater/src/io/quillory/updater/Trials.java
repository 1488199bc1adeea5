package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/**
 * What is known about the versions that have been started: the file "trials" of the folder for
 * updates. Only the updater writes it, and quillory-update reads it. docs/formats/update-trials.md
 * has the bytes.
 */
final class Trials {
  static final String NAME = "trials";
  static final String UNKNOWN = "UNKNOWN";
  static final String GOOD = "GOOD";
  static final String BLOCKED = "BLOCKED";
  /** Blocked, and the user has been told. */
  static final String TOLD = "TOLD";

  private static final String FORMAT = "1";
  private static final int BAD_TRIES_OF_A_BLOCKED_VERSION = 2;
  /** Values of a version: folder, archive, bad tries, state. */
  private static final int STRIDE = 4;

  private static final int ARCHIVE = 1;
  private static final int TRIES = 2;
  private static final int STATE = 3;

  private final File file;
  private final List<String> values = new ArrayList<String>();
  private boolean isChanged;

  private Trials(File file) {
    this.file = file;
  }

  /** Those of a folder for updates; none where there is no file, or one of another format. */
  static Trials read(File updateFolder) {
    Trials trials = new Trials(new File(updateFolder, NAME));
    if (!trials.file.isFile()) {
      return trials;
    }
    try {
      Records records = Records.of(trials.file);
      if (records.next().equals(FORMAT)) {
        for (long left = records.nextNumber() * STRIDE; left > 0 && !records.isAtEnd(); left--) {
          trials.values.add(records.next());
        }
        // Cut by something else than us: a version without all of its values says nothing.
        while (trials.values.size() % STRIDE != 0) {
          trials.values.remove(trials.values.size() - 1);
        }
      }
    } catch (IOException e) {
      // Nothing is known then.
    }
    return trials;
  }

  /** UNKNOWN also for a folder that came from another archive than the one that is known. */
  String stateOf(File folder) {
    int at = indexOf(folder.getName());
    return at < 0 || !isOfArchive(at, folder) ? UNKNOWN : values.get(at + STATE);
  }

  /** Whether a start of this version has been judged. */
  boolean knows(File folder) {
    int at = indexOf(folder.getName());
    return at >= 0 && isOfArchive(at, folder);
  }

  /** Adds the names of the folders in {@code master} that are not to be started. */
  void addBlocked(File master, List<String> names) {
    for (int at = 0; at < values.size(); at += STRIDE) {
      if (isBlocked(values.get(at + STATE)) && isOfArchive(at, new File(master, values.get(at)))) {
        names.add(values.get(at));
      }
    }
  }

  void noteGood(File folder) {
    set(entryOf(folder), STATE, GOOD);
  }

  void noteNeutral(File folder) {
    entryOf(folder);
  }

  /** Of a version that was never good the second one blocks it. */
  void noteBad(File folder) {
    int at = entryOf(folder);
    if (!values.get(at + STATE).equals(UNKNOWN)) {
      return;
    }
    long tries = Records.numberAtStartOf(values.get(at + TRIES)) + 1;
    set(at, TRIES, Long.toString(tries));
    if (tries >= BAD_TRIES_OF_A_BLOCKED_VERSION) {
      set(at, STATE, BLOCKED);
    }
  }

  /** The folders that are blocked and of which nobody has been told; from now on they are told. */
  List<String> takeUntold() {
    List<String> untold = new ArrayList<String>();
    for (int at = 0; at < values.size(); at += STRIDE) {
      if (values.get(at + STATE).equals(BLOCKED)) {
        untold.add(values.get(at));
        set(at, STATE, TOLD);
      }
    }
    return untold;
  }

  /**
   * Brings changes to the disk: the file is the old one or the new one, whatever happens. Versions
   * that are gone are left out, but for those that must not come back.
   */
  void save() throws IOException {
    if (!isChanged) {
      return;
    }
    File master = file.getParentFile().getParentFile();
    StringBuilder text = new StringBuilder();
    int count = 0;
    for (int at = 0; at < values.size(); at += STRIDE) {
      if (!isBlocked(values.get(at + STATE)) && !new File(master, values.get(at)).exists()) {
        continue;
      }
      for (int i = at; i < at + STRIDE; i++) {
        text.append(values.get(i)).append('\0');
      }
      count++;
    }
    SyncedFile.replace(file, FORMAT + '\0' + count + '\0' + text);
    isChanged = false;
  }

  private static boolean isBlocked(String state) {
    return state.equals(BLOCKED) || state.equals(TOLD);
  }

  private int indexOf(String folderName) {
    for (int at = 0; at < values.size(); at += STRIDE) {
      if (values.get(at).equals(folderName)) {
        return at;
      }
    }
    return -1;
  }

  private boolean isOfArchive(int at, File folder) {
    return values.get(at + ARCHIVE).equals(archiveOf(folder));
  }

  /** The place of a version among the values, where it stands from now on if it did not yet. */
  private int entryOf(File folder) {
    int at = indexOf(folder.getName());
    if (at >= 0 && isOfArchive(at, folder)) {
      return at;
    }
    isChanged = true;
    if (at < 0) {
      at = values.size();
      for (int i = 0; i < STRIDE; i++) {
        values.add("");
      }
    }
    values.set(at, folder.getName());
    values.set(at + ARCHIVE, archiveOf(folder));
    values.set(at + TRIES, "0");
    values.set(at + STATE, UNKNOWN);
    return at;
  }

  private void set(int at, int which, String value) {
    isChanged |= !values.set(at + which, value).equals(value);
  }

  private static String archiveOf(File folder) {
    try {
      return VersionFolders.archiveOf(folder);
    } catch (IOException e) {
      return "";
    }
  }
}
