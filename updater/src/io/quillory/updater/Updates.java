package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.concurrent.locks.LockSupport;

/**
 * What updates mean for a start: which version runs, and what is done behind its first window. Made
 * for installations that have settings for updates or a folder of them; the others never load this
 * class.
 *
 * <p>An application waits for this at every start, and a class takes a third of a millisecond to
 * load. So a start in which nothing has to be decided, because the newest version is known to be
 * good, is recognised here by a look at three small files; all others are {@link Choice}'s.
 */
final class Updates implements Runnable {
  static final String FOLDER_NAME = "QYUpdates";
  static final String STATE_NAME = "state";
  static final String STATE_FORMAT = "1";
  static final int STATE_VALUES_BEFORE_KEYS = 5;
  private static final String SETTINGS_FORMAT = "1";
  private static final String TRIALS_FORMAT = "1";
  /** The application has the machine for itself for so long. */
  private static final long NANOS_BEFORE_COMPANION = 1_000_000_000L;

  /** Where the administrator's files are, by application; replaced by tests. */
  static File administratorsFolder =
      new File(
          System.getProperty("os.name").startsWith("Mac")
              ? "/Library/Preferences/quillory"
              : "/etc/quillory");

  final File propertiesFile;
  final LaunchProperties properties;
  final File updaterFolder;
  final File master;
  /** {@link #FOLDER_NAME} of the folder that this user's starts write to. */
  final File folder;
  final String appName;
  /** The version that runs, and the file of this start; null for one that is known to be good. */
  File chosen;
  Attempt attempt;

  private String mode;
  private UpdateSettings settings;

  Updates(
      File propertiesFile,
      LaunchProperties properties,
      File updaterFolder,
      File folder,
      String appName) {
    this.propertiesFile = propertiesFile;
    this.properties = properties;
    this.updaterFolder = updaterFolder;
    this.folder = folder;
    this.appName = appName;
    master = updaterFolder.getParentFile();
  }

  /**
   * The folder of the version that runs now, or null where there is none. One that was blocked or
   * withdrawn runs where there is no other. An installation without a version gets one first; the
   * message of the exception says why it could not. All that has to be done before anything of the
   * version's own is read or run is done, and the rest is begun.
   */
  File begin() throws IOException {
    try {
      mode = usualMode();
      chosen = mode == null ? null : usualVersion();
    } catch (IOException e) {
      chosen = null; // What cannot be read is looked at with more care.
    }
    if (chosen == null) {
      mode = settings().mode;
      Choice choice = new Choice(this);
      chosen = choice.make();
      if (chosen == null) {
        return null;
      }
      attempt = choice.begin(chosen);
    }
    System.setProperty("quillory.update.folder", folder.getPath());
    System.setProperty("quillory.update.mode", mode);
    System.setProperty("quillory.version.folder", chosen.getPath());
    File program = program("quillory-update");
    if (program != null) {
      System.setProperty("quillory.update.program", program.getPath());
    }
    Thread thread = new Thread(this, "Quillory updates");
    thread.setDaemon(true);
    thread.start();
    return chosen;
  }

  /** The thread of {@link #begin}. */
  @Override
  public void run() {
    // Not by sleep(): its exception would be one more class to load, in every start.
    LockSupport.parkNanos(NANOS_BEFORE_COMPANION);
    Companion.accompany(this);
  }

  UpdateSettings settings() {
    if (settings == null) {
      settings = UpdateSettings.of(updaterFolder, properties, appName);
    }
    return settings;
  }

  /** A program that travels with the updater, or null. */
  File program(String name) {
    File program = new File(updaterFolder, name);
    return program.isFile() ? program : null;
  }

  /** What the administrator has written about an application; null where that is nothing. */
  static File fileOfAdministrator(String appName) {
    File file = new File(administratorsFolder, appName + ".conf");
    // No folder of that name is in another one.
    return appName.indexOf('/') < 0 && file.isFile() ? file : null;
  }

  /** The mode in force, where it is one that leaves a start alone; else null. */
  private String usualMode() throws IOException {
    File file = new File(updaterFolder, UpdateSettings.NAME);
    if (!file.isFile() || fileOfAdministrator(appName) != null) {
      return null;
    }
    Records records = Records.of(file);
    if (!records.next().equals(SETTINGS_FORMAT)) {
      return null;
    }
    records.skip(1);
    String ofFile = records.next();
    String ofBundle = properties.get("qydyna_update_mode");
    String found = ofBundle == null || ofBundle.isEmpty() ? ofFile : ofBundle;
    return found.equals("background") || found.equals("ask") || found.equals("manual")
        ? found
        : null;
  }

  /** The newest version, where there is nothing to be decided about it; else null. */
  private File usualVersion() throws IOException {
    String[] names = folder.list();
    if (names == null) {
      return null;
    }
    for (String name : names) {
      if (name.startsWith("try-")) {
        return null;
      }
    }
    File newest = VersionFolders.newest(master, appName);
    boolean isUsual =
        newest != null && !newest.equals(updaterFolder) && isKnownGood(newest) && isStateUsual();
    return isUsual ? newest : null;
  }

  /** Whether all versions that were ever started were good, this one among them. */
  private boolean isKnownGood(File version) throws IOException {
    File file = new File(folder, "trials");
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
  private boolean isStateUsual() throws IOException {
    File file = new File(folder, STATE_NAME);
    if (!file.isFile()) {
      return true;
    }
    Records state = Records.of(file);
    if (!state.next().equals(STATE_FORMAT)) {
      return true; // Of another program; so Choice has it.
    }
    state.skip(STATE_VALUES_BEFORE_KEYS);
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
}
