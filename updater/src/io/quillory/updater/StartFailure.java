package io.quillory.updater;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;

/** Why an application was not started, left for the launcher, which tells the user in a window. */
final class StartFailure {
  private StartFailure() {}

  /** Writes it beside the launch properties, where these ask for it. What fails is left out. */
  static void leave(File propertiesFile, String message) {
    try {
      if (!"true".equals(LaunchProperties.read(propertiesFile).get("qydyna_error_dialog"))) {
        return;
      }
      String name = LaunchProperties.FAILURE_PREFIX + LaunchProperties.stampIn(propertiesFile);
      FileOutputStream out = new FileOutputStream(new File(propertiesFile.getParentFile(), name));
      try {
        out.write((message + '\n').getBytes(StandardCharsets.UTF_8));
      } finally {
        out.close();
      }
    } catch (IOException e) {
      // It stands on standard error.
    }
  }
}
