package io.quillory.updater;

import java.io.File;
import java.io.IOException;

/**
 * What updates mean for a start in which something has to be decided, and what is known of it behind
 * its first window. A start of a version that is known to be good makes this when the application
 * runs ({@link Main#run}): a class takes a third of a millisecond to load.
 */
final class Updates {
  static final String FOLDER_NAME = "QYUpdates";
  static final String STATE_NAME = "state";
  static final String STATE_FORMAT = "1";
  static final int STATE_VALUES_BEFORE_KEYS = 5;

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
   * Chooses the version that runs now; false where there is none. One that was blocked or withdrawn
   * runs where there is no other. An installation without a version gets one first; the message of
   * the exception says why it could not. All that has to be done before anything of the version's
   * own is read or run is done.
   */
  boolean choose() throws IOException {
    Choice choice = new Choice(this);
    chosen = choice.make();
    if (chosen != null) {
      attempt = choice.begin(chosen);
    }
    return chosen != null;
  }

  UpdateSettings settings() {
    if (settings == null) {
      settings = UpdateSettings.of(updaterFolder, properties, appName);
    }
    return settings;
  }

  /** A program that travels with the updater, or null. */
  File program(String name) {
    return Main.programIn(updaterFolder, name);
  }
}
