package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** An update that a start waits for, in a window of its own: quillory-update-window. */
final class Foreground {
  private static final int DONE = 0;
  private static final int OFF = 3;
  private static final int NEEDS_ADMINISTRATOR = 4;
  private static final int CANCELLED = 5;

  private Foreground() {}

  /**
   * Fetches what is new and waits for it. Where there is a version, nothing that goes wrong is a
   * reason not to start it; without one the message of the exception says why there is none.
   */
  static void update(Updates updates, boolean isFirst) throws IOException {
    List<String> command = new ArrayList<String>();
    command.add(updates.program("quillory-update-window").getPath());
    command.add(isFirst ? "--first" : "--update");
    if (!isFirst && updates.settings().is(UpdateSettings.AT_START)) {
      command.add("--at-most");
      command.add(Long.toString(updates.settings().atStartSeconds));
    }
    command.add("--properties");
    command.add(updates.propertiesFile.getPath());
    command.add("--own-folder");
    command.add(updates.folder.getParent());
    int status = -1;
    try {
      status = new ProcessBuilder(command).inheritIO().start().waitFor();
    } catch (IOException e) {
      if (isFirst) {
        throw new IOException(nothingInstalled(updates) + e.getMessage());
      }
    } catch (InterruptedException e) {
      Thread.currentThread().interrupt();
    }
    if (isFirst && status != DONE) {
      throw new IOException(nothingInstalled(updates) + reasonFor(status, updates.folder));
    }
  }

  private static String nothingInstalled(Updates updates) {
    return "No version of \"" + updates.appName + "\" is installed: ";
  }

  private static String reasonFor(int status, File folder) {
    switch (status) {
      case CANCELLED:
        return "the installation was cancelled.";
      case OFF:
        return "updates are switched off.";
      case NEEDS_ADMINISTRATOR:
        return "it takes the administrator's rights.";
      default:
        return "it could not be fetched. The newest log in "
            + new File(folder.getParentFile(), "logs") + " says why.";
    }
  }
}
