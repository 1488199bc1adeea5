package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/**
 * What updates mean for a start: which version runs, what its end will show of it, and what is done
 * behind its first window. Made for installations that have settings for updates or a folder of
 * them; the others never load this class.
 *
 * <p>An application waits for this at every start, so what is rarely needed is in classes of its
 * own, and what takes long is done by a thread, later.
 */
final class Updates implements Runnable {
  static final String FOLDER_NAME = "QYUpdates";
  private static final String STATE_NAME = "state";
  private static final String STATE_FORMAT = "1";
  private static final int STATE_VALUES_BEFORE_KEYS = 5;
  /** The application has the machine for itself for so long. */
  private static final int MILLIS_BEFORE_COMPANION = 1000;

  final File propertiesFile;
  final File updaterFolder;
  /** {@link #FOLDER_NAME} of the folder that this user's starts write to. */
  final File folder;
  final String appName;
  final UpdateSettings settings;
  /** The version that runs, and the file of this start; null for one that is known to be good. */
  File chosen;
  Attempt attempt;

  private final File master;
  private final Trials trials;
  private final List<String> withdrawn = new ArrayList<String>();
  private boolean isOfferCritical;
  private long offeredVersion;

  Updates(
      File propertiesFile,
      LaunchProperties properties,
      File updaterFolder,
      File folder,
      String appName) {
    this.propertiesFile = propertiesFile;
    this.updaterFolder = updaterFolder;
    this.folder = folder;
    this.appName = appName;
    master = updaterFolder.getParentFile();
    settings = UpdateSettings.of(updaterFolder, properties, appName);
    trials = Trials.read(folder);
  }

  /**
   * The folder of the version that runs now, or null where there is none. One that was blocked or
   * withdrawn runs where there is no other. An installation without a version gets one first; the
   * message of the exception says why it could not.
   */
  File chooseVersion() throws IOException {
    judgeEarlierStarts();
    readState();
    chosen = choose();
    if (shallUpdateFirst()) {
      Foreground.update(this, chosen == null);
      readState();
      chosen = choose();
    }
    return chosen;
  }

  /** Before anything of the version's own is read or run. */
  void begin() {
    tellOfGoingBack();
    set("quillory.update.folder", folder.getPath());
    set("quillory.update.mode", settings.mode);
    set("quillory.version.folder", chosen.getPath());
    File program = program("quillory-update");
    if (program != null) {
      set("quillory.update.program", program.getPath());
    }
    if (!trials.stateOf(chosen).equals(Trials.GOOD)) {
      beginAttempt();
    }
    Thread thread = new Thread(this, "Quillory updates");
    thread.setDaemon(true);
    thread.start();
  }

  /** The thread of {@link #begin}. */
  @Override
  public void run() {
    try {
      Thread.sleep(MILLIS_BEFORE_COMPANION);
      new Companion(this, new Companion.Surroundings()).run();
    } catch (InterruptedException e) {
      // Somebody ends all threads.
    }
  }

  /** A program that travels with the updater, or null. */
  File program(String name) {
    File program = new File(updaterFolder, name);
    return program.isFile() ? program : null;
  }

  private static void set(String key, String value) {
    System.setProperty(key, value);
  }

  private void judgeEarlierStarts() {
    String[] names = folder.list();
    if (names == null) {
      return;
    }
    for (String name : names) {
      if (name.startsWith(Attempt.PREFIX)) {
        try {
          Judge.judge(folder, master, names, trials);
        } catch (IOException e) {
          // Of a folder that cannot be written to: the start goes by what is known.
        }
        return;
      }
    }
  }

  /** What quillory-update knows; nothing where it has not run. */
  private void readState() {
    withdrawn.clear();
    isOfferCritical = false;
    Records state;
    try {
      state = Records.of(new File(folder, STATE_NAME));
    } catch (IOException e) {
      return;
    }
    if (!state.next().equals(STATE_FORMAT)) {
      return;
    }
    state.skip(STATE_VALUES_BEFORE_KEYS);
    state.skip(state.nextNumber());
    state.skip(3); // Phase, reason, release.
    offeredVersion = state.nextNumber();
    state.skip(2); // Shown version, size.
    isOfferCritical = state.nextNumber() == 1;
    state.skip(5); // Notes, staged, previous and skipped version, when to remind.
    for (long left = state.nextNumber(); left > 0 && !state.isAtEnd(); left--) {
      withdrawn.add("Quillory-" + appName + '-' + state.next() + "-complete");
    }
  }

  private File choose() {
    List<String> passedOver = new ArrayList<String>(withdrawn);
    trials.addBlocked(master, passedOver);
    if (!passedOver.isEmpty()) {
      notePassedOver(passedOver);
    }
    File newest = newest(passedOver);
    if (newest == null && passedOver.size() > withdrawn.size()) {
      newest = newest(withdrawn);
    }
    return newest == null && !passedOver.isEmpty() ? newest(null) : newest;
  }

  /** So that the application does not take one of these for an update that is ready. */
  private static void notePassedOver(List<String> names) {
    StringBuilder text = new StringBuilder();
    for (String name : names) {
      text.append(text.length() == 0 ? "" : "/").append(name);
    }
    set("quillory.passed.over", text.toString());
  }

  private File newest(List<String> passedOver) {
    File newest = VersionFolders.newest(master, appName, passedOver);
    // An application with the updater's own name would be started by itself for ever.
    return updaterFolder.equals(newest) ? null : newest;
  }

  private boolean shallUpdateFirst() {
    if (program("quillory-update-window") == null) {
      return false;
    }
    // Whatever the mode: without an application there is nothing that could be left as it is.
    if (chosen == null) {
      return true;
    }
    if (settings.is(UpdateSettings.OFF)) {
      return false;
    }
    return settings.is(UpdateSettings.AT_START)
        || (isOfferCritical && offeredVersion > VersionFolders.versionOf(chosen.getName()));
  }

  /** Once for each version that is no longer tried. */
  private void tellOfGoingBack() {
    for (String name : trials.takeUntold()) {
      if (name.equals(chosen.getName())) {
        continue; // There is no other.
      }
      String version = VersionFolders.versionTextOf(name);
      System.err.println(
          "[Updater] Version " + version + " of \"" + appName
              + "\" did not start twice and is not tried again. Version "
              + VersionFolders.versionTextOf(chosen.getName()) + " is started.");
      set("quillory.went.back.from", version);
    }
    try {
      trials.save();
    } catch (IOException e) {
      // It is told again by the next start.
    }
  }

  private void beginAttempt() {
    if (!folder.isDirectory() && (settings.is(UpdateSettings.OFF) || !folder.mkdir())) {
      return;
    }
    if (!trials.knows(chosen)) {
      List<String> itself = new ArrayList<String>(withdrawn);
      itself.add(chosen.getName());
      File before = newest(itself);
      if (before != null) {
        set("quillory.updated.from", VersionFolders.versionTextOf(before.getName()));
      }
    }
    try {
      attempt =
          Attempt.begin(folder, LaunchProperties.stampIn(propertiesFile), chosen.getName());
      set("quillory.try.file", attempt.file.getPath());
    } catch (IOException e) {
      // A full disk, say: then this start shows nothing of its version.
    }
  }
}
