package io.quillory.updater;

import java.io.File;
import java.io.IOException;

/**
 * How an installation is updated: the file "QuilloryUpdate" of the updater's folder, what the
 * bundle's parameters say otherwise, and above both what the machine's administrator has written.
 */
final class UpdateSettings {
  static final String NAME = "QuilloryUpdate";

  static final String BACKGROUND = "background";
  static final String ASK = "ask";
  static final String AT_START = "at-start";
  static final String OFF = "off";

  private static final String FORMAT = "1";
  private static final String MODE_KEY = "mode";

  /** One of the modes; OFF where there are no settings, or of another format. */
  final String mode;
  final long atStartSeconds;
  final long checkHours;

  private UpdateSettings(String mode, long atStartSeconds, long checkHours) {
    this.mode = mode;
    this.atStartSeconds = atStartSeconds;
    this.checkHours = checkHours;
  }

  static UpdateSettings of(File updaterFolder, LaunchProperties properties, String appName) {
    Records records;
    try {
      records = Records.of(new File(updaterFolder, NAME));
    } catch (IOException e) {
      return new UpdateSettings(OFF, 0, 0);
    }
    if (!records.next().equals(FORMAT)) {
      return new UpdateSettings(OFF, 0, 0);
    }
    records.next(); // The channel.
    String mode = records.next();
    long atStartSeconds = records.nextNumber();
    long checkHours = records.nextNumber();
    String ofBundle = properties.get("qydyna_update_mode");
    if (ofBundle != null && !ofBundle.isEmpty()) {
      mode = ofBundle;
    }
    String ofAdministrator = administratorsMode(appName);
    return new UpdateSettings(
        ofAdministrator == null ? mode : ofAdministrator, atStartSeconds, checkHours);
  }

  boolean is(String wanted) {
    return mode.equals(wanted);
  }

  /** The value of the last line "mode = …"; null without a file or such a line. */
  private static String administratorsMode(String appName) {
    File file = Main.fileOfAdministrator(appName);
    if (file == null) {
      return null;
    }
    String text;
    try {
      text = Records.of(file).next();
    } catch (IOException e) {
      // It is there and nobody knows what it says: the careful answer.
      return OFF;
    }
    String mode = null;
    for (int start = 0; start < text.length(); ) {
      int end = text.indexOf('\n', start);
      end = end < 0 ? text.length() : end;
      String line = text.substring(start, end);
      int equals = line.indexOf('=');
      if (equals > 0 && line.substring(0, equals).trim().equals(MODE_KEY)) {
        int comment = line.indexOf('#');
        mode = line.substring(equals + 1, comment > equals ? comment : line.length()).trim();
      }
      start = end + 1;
    }
    return mode;
  }
}
