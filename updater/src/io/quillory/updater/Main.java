package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.List;
import java.util.concurrent.locks.LockSupport;

/**
 * Started by the launcher with the path of the launch-properties file, the extra arguments of the
 * updater's own launch file, and the user's arguments. Runs the newest installed version of the
 * application with the extra arguments of the application's launch file and the user's arguments,
 * and where that launch file does not say otherwise with the path in front of them. Where that
 * cannot be done, it says so on standard error and ends the process with status 1.
 *
 * <p>Every start goes through here, so nothing is used that takes the JVM long to load: no lambdas,
 * no regular expressions, no formatting, no logging, no exception class of its own. What a start does
 * about updates when there is nothing to be decided stands here and in {@link VersionFolders}, which
 * are loaded anyway: a class more is a third of a millisecond.
 */
public final class Main implements Runnable {
  private static final int EXIT_FAILURE = 1;
  private static final String SETTINGS_FORMAT = "1";
  /** The application has the machine for itself for so long. */
  private static final long NANOS_BEFORE_COMPANION = 1_000_000_000L;

  /** Where the administrator's files are, by application; replaced by tests. */
  static File administratorsFolder =
      new File(
          System.getProperty("os.name").startsWith("Mac")
              ? "/Library/Preferences/quillory"
              : "/etc/quillory");

  private final File propertiesFile;
  private final LaunchProperties properties;
  private final File updaterFolder;
  private final File updateFolder;
  private final String appName;
  private File chosen;
  private Updates updates;

  /** A start of an installation that has settings for updates or a folder of them. */
  Main(
      File propertiesFile,
      LaunchProperties properties,
      File updaterFolder,
      File updateFolder,
      String appName) {
    this.propertiesFile = propertiesFile;
    this.properties = properties;
    this.updaterFolder = updaterFolder;
    this.updateFolder = updateFolder;
    this.appName = appName;
  }

  public static void main(String[] arguments) throws Throwable {
    Application application;
    String[] passedOn;
    try {
      if (arguments.length == 0) {
        throw new IOException("The path of the launch-properties file is missing.");
      }
      File propertiesFile = new File(arguments[0]);
      LaunchProperties properties = readProperties(propertiesFile);
      LaunchProperties.deleteEarlierThan(propertiesFile);
      System.setProperty("quillory.launch.properties", propertiesFile.getPath());

      File ownFolder = new File(required(properties, "qystat_app_dir")).getAbsoluteFile();
      File folder = versionToStart(propertiesFile, properties, ownFolder);
      LaunchFile launchFile = readLaunchFile(folder);
      boolean isFirstJvm = System.getProperty(Application.CHOSEN) == null;
      if (isFirstJvm
          && launchFile.isSingleInstance()
          && isHandedOver(propertiesFile, properties, ownFolder, arguments)) {
        StartupArchive.noteNothing();
        System.exit(0);
      }
      if (Application.isOtherThan(folder)) {
        runElsewhere(folder, launchFile, propertiesFile, ownFolder, arguments);
      }
      launchFile.setSystemProperties();
      application = Application.in(folder, launchFile);
      passedOn = argumentsFor(launchFile, arguments, ownExtraArguments(ownFolder, arguments));
    } catch (IOException e) {
      System.err.println("[Updater] " + e.getMessage());
      if (arguments.length > 0) {
        StartFailure.leave(new File(arguments[0]), e.getMessage());
      }
      System.exit(EXIT_FAILURE);
      return;
    }
    // Constants, so that the class is loaded where it is needed.
    if (System.getProperty(StartupArchive.TRIES) == null
        && System.getProperty(StartupArchive.BASE) == null) {
      application.run(passedOn);
      return;
    }
    StartupArchive.begin();
    try {
      application.run(passedOn);
    } catch (Throwable e) {
      StartupArchive.noteFailure();
      throw e;
    }
  }

  /** Ends this process when the application has; returns where there is no other process. */
  private static void runElsewhere(
      File folder, LaunchFile launchFile, File propertiesFile, File ownFolder, String[] arguments)
      throws IOException {
    OwnProcess.remember(
        LaunchProperties.ownFolderOf(propertiesFile, ownFolder), ownFolder.getParentFile());
    int status = OwnProcess.run(folder, launchFile, ownFolder, arguments);
    if (status >= 0) {
      StartupArchive.noteNothing();
      System.exit(status);
    }
  }

  /** Such a start shows nothing of its version. */
  private static boolean isHandedOver(
      File propertiesFile, LaunchProperties properties, File ownFolder, String[] arguments) {
    String[] requests =
        SingleInstance.requestsOf(
            properties, arguments, 1 + ownExtraArguments(ownFolder, arguments));
    File place = LaunchProperties.ownFolderOf(propertiesFile, ownFolder);
    if (!SingleInstance.isHandedOver(place, propertiesFile, requests)) {
      return false;
    }
    Attempt.noteNeutralEnd();
    return true;
  }

  private static LaunchProperties readProperties(File file) throws IOException {
    try {
      return LaunchProperties.read(file);
    } catch (IOException e) {
      throw new IOException("Cannot read the launch properties: " + e.getMessage());
    }
  }

  private static String required(LaunchProperties properties, String key) throws IOException {
    String value = properties.get(key);
    if (value == null || value.isEmpty()) {
      throw new IOException("The launch properties have no " + key + ".");
    }
    return value;
  }

  /** The one that runs now. What is done for updates is begun. */
  private static File versionToStart(
      File propertiesFile, LaunchProperties properties, File ownFolder) throws IOException {
    String chosen = System.getProperty(Application.CHOSEN);
    if (chosen != null) {
      return new File(chosen);
    }
    String name = required(properties, "qystat_app_name");
    File master = ownFolder.getParentFile();
    if (master == null) {
      return newestOf(name, ownFolder);
    }
    File updateFolder =
        new File(LaunchProperties.ownFolderOf(propertiesFile, ownFolder), Updates.FOLDER_NAME);
    if (!new File(ownFolder, UpdateSettings.NAME).isFile() && !updateFolder.isDirectory()) {
      return newestOf(name, ownFolder);
    }
    Main start = new Main(propertiesFile, properties, ownFolder, updateFolder, name);
    File folder = start.begin();
    return folder == null ? newestOf(name, ownFolder) : folder;
  }

  /**
   * Begins what is done for updates. The version that runs now, or null where there is none; the
   * exception is {@link Updates#choose}'s.
   */
  File begin() throws IOException {
    String mode = null;
    try {
      mode = usualMode();
      chosen =
          mode == null
              ? null
              : VersionFolders.undisputed(updaterFolder.getParentFile(), appName, updateFolder);
    } catch (IOException e) {
      chosen = null; // What cannot be read is looked at with more care.
    }
    // An application with the updater's own name would be started by itself for ever.
    if (chosen == null || chosen.equals(updaterFolder)) {
      chosen = null;
      Updates careful = updates();
      if (!careful.choose()) {
        return null;
      }
      chosen = careful.chosen;
      mode = careful.settings().mode;
    }
    System.setProperty("quillory.update.folder", updateFolder.getPath());
    System.setProperty("quillory.update.mode", mode);
    System.setProperty("quillory.version.folder", chosen.getPath());
    File program = programIn(updaterFolder, "quillory-update");
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
    Companion.accompany(updates());
  }

  /** Those of this start. */
  Updates updates() {
    if (updates == null) {
      updates = new Updates(propertiesFile, properties, updaterFolder, updateFolder, appName);
      updates.chosen = chosen;
    }
    return updates;
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

  /** What the administrator has written about an application; null where that is nothing. */
  static File fileOfAdministrator(String appName) {
    File file = new File(administratorsFolder, appName + ".conf");
    // No folder of that name is in another one.
    return appName.indexOf('/') < 0 && file.isFile() ? file : null;
  }

  /** A program that travels with the updater, or null. */
  static File programIn(File updaterFolder, String name) {
    File program = new File(updaterFolder, name);
    return program.isFile() ? program : null;
  }

  private static File newestOf(String name, File ownFolder) throws IOException {
    File master = ownFolder.getParentFile();
    File folder = master == null ? null : VersionFolders.newest(master, name);
    // An application with the updater's own name would be started by itself for ever.
    if (folder == null || folder.equals(ownFolder)) {
      throw new IOException("No version of \"" + name + "\" is installed in " + master + ".");
    }
    return folder;
  }

  private static LaunchFile readLaunchFile(File folder) throws IOException {
    try {
      return LaunchFile.read(folder);
    } catch (IOException e) {
      throw new IOException("Cannot read the launch file: " + e.getMessage());
    }
  }

  /** How many arguments behind the first are the updater's own and not the user's. */
  private static int ownExtraArguments(File ownFolder, String[] arguments) {
    List<String> own;
    try {
      own = LaunchFile.read(ownFolder).extraArguments;
    } catch (IOException e) {
      return 0; // Not started by the launcher.
    }
    for (int i = 0; i < own.size(); i++) {
      if (i + 1 >= arguments.length || !own.get(i).equals(arguments[i + 1])) {
        return 0;
      }
    }
    return own.size();
  }

  private static String[] argumentsFor(LaunchFile launchFile, String[] arguments, int skipped) {
    int own = launchFile.passesUsersArgumentsOnly() ? 0 : 1;
    List<String> extra = launchFile.extraArguments;
    int userCount = arguments.length - 1 - skipped;
    String[] result = new String[own + extra.size() + userCount];
    if (own == 1) {
      result[0] = arguments[0];
    }
    for (int i = 0; i < extra.size(); i++) {
      result[own + i] = extra.get(i);
    }
    System.arraycopy(arguments, 1 + skipped, result, own + extra.size(), userCount);
    return result;
  }
}
