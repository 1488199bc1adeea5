package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** Which version runs, where that has to be decided, and what its end will show of it. */
final class Choice {
  private final Updates updates;
  private final Trials trials;
  private final List<String> withdrawn = new ArrayList<String>();
  private boolean isOfferCritical;
  private long offeredVersion;

  Choice(Updates updates) {
    this.updates = updates;
    trials = Trials.read(updates.folder);
  }

  /** The version's folder, or null; the exception is {@link Updates#choose}'s. */
  File make() throws IOException {
    judgeEarlierStarts();
    readState();
    File chosen = choose();
    if (shallUpdateFirst(chosen)) {
      Foreground.update(updates, chosen == null);
      readState();
      chosen = choose();
    }
    return chosen;
  }

  /** Tells what there is to be told; the file of this start, where its version is on trial. */
  Attempt begin(File chosen) {
    tellOfGoingBack(chosen);
    return trials.stateOf(chosen).equals(Trials.GOOD) ? null : beginAttempt(chosen);
  }

  private void judgeEarlierStarts() {
    String[] names = updates.folder.list();
    if (names == null) {
      return;
    }
    try {
      Judge.judge(updates.folder, updates.master, names, trials);
    } catch (IOException e) {
      // Of a folder that cannot be written to: the start goes by what is known.
    }
  }

  /** What quillory-update knows; nothing where it has not run. */
  private void readState() {
    withdrawn.clear();
    isOfferCritical = false;
    Records state;
    try {
      state = Records.of(new File(updates.folder, Updates.STATE_NAME));
    } catch (IOException e) {
      return;
    }
    if (!state.next().equals(Updates.STATE_FORMAT)) {
      return;
    }
    state.skip(Updates.STATE_VALUES_BEFORE_KEYS);
    state.skip(state.nextNumber());
    state.skip(3); // Phase, reason, release.
    offeredVersion = state.nextNumber();
    state.skip(2); // Shown version, size.
    isOfferCritical = state.nextNumber() == 1;
    state.skip(5); // Notes, staged, previous and skipped version, when to remind.
    for (long left = state.nextNumber(); left > 0 && !state.isAtEnd(); left--) {
      withdrawn.add("Quillory-" + updates.appName + '-' + state.next() + "-complete");
    }
  }

  private File choose() {
    List<String> passedOver = new ArrayList<String>(withdrawn);
    trials.addBlocked(updates.master, passedOver);
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
    System.setProperty("quillory.passed.over", text.toString());
  }

  private File newest(List<String> passedOver) {
    File newest = VersionFolders.newest(updates.master, updates.appName, passedOver);
    // An application with the updater's own name would be started by itself for ever.
    return updates.updaterFolder.equals(newest) ? null : newest;
  }

  private boolean shallUpdateFirst(File chosen) {
    if (updates.program("quillory-update-window") == null) {
      return false;
    }
    // Whatever the mode: without an application there is nothing that could be left as it is.
    if (chosen == null) {
      return true;
    }
    if (updates.settings().is(UpdateSettings.OFF)) {
      return false;
    }
    return updates.settings().is(UpdateSettings.AT_START)
        || (isOfferCritical && offeredVersion > VersionFolders.versionOf(chosen.getName()));
  }

  /** Once for each version that is no longer tried. */
  private void tellOfGoingBack(File chosen) {
    for (String name : trials.takeUntold()) {
      if (name.equals(chosen.getName())) {
        continue; // There is no other.
      }
      String version = VersionFolders.versionTextOf(name);
      System.err.println(
          "[Updater] Version " + version + " of \"" + updates.appName
              + "\" did not start twice and is not tried again. Version "
              + VersionFolders.versionTextOf(chosen.getName()) + " is started.");
      System.setProperty("quillory.went.back.from", version);
    }
    try {
      trials.save();
    } catch (IOException e) {
      // It is told again by the next start.
    }
  }

  private Attempt beginAttempt(File chosen) {
    File folder = updates.folder;
    boolean isOff = updates.settings().is(UpdateSettings.OFF);
    if (!folder.isDirectory() && (isOff || !folder.mkdir())) {
      return null;
    }
    if (!trials.knows(chosen)) {
      List<String> itself = new ArrayList<String>(withdrawn);
      itself.add(chosen.getName());
      File before = newest(itself);
      if (before != null) {
        System.setProperty(
            "quillory.updated.from", VersionFolders.versionTextOf(before.getName()));
      }
    }
    try {
      Attempt attempt =
          Attempt.begin(
              folder, LaunchProperties.stampIn(updates.propertiesFile), chosen.getName());
      System.setProperty("quillory.try.file", attempt.file.getPath());
      return attempt;
    } catch (IOException e) {
      return null; // A full disk, say: then this start shows nothing of its version.
    }
  }
}
