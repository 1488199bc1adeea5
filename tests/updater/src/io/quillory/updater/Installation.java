package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import org.junit.rules.TemporaryFolder;

/** An installation of "Demo" for tests, with updater 4 and the versions that are asked for. */
final class Installation {
  /** Of background mode, at most 20 seconds at the start, every 24 hours. */
  static final String SETTINGS = "1\0stable\0background\0" + "20\0" + "24\0" + "2\0" + "0\0" + "0\0";

  final File master;
  final File updater;
  final File updates;
  File properties;
  private int starts;

  Installation(TemporaryFolder place) throws IOException {
    master = place.newFolder("master");
    updater = new File(master, "Quillory-Quillory-4-complete");
    updates = new File(master, "QYUpdates");
    updater.mkdir();
    beginStart();
  }

  /** The properties of one more start: the next one, and the first. */
  void beginStart() throws IOException {
    properties = new File(updater, "QYLaunchProperties-1700000020000-" + ++starts);
    write(properties, "qystat_app_name\0Demo\0qystat_app_dir\0" + updater);
  }

  static void write(File file, String content) throws IOException {
    file.getParentFile().mkdirs();
    Files.write(file.toPath(), content.getBytes(StandardCharsets.UTF_8));
  }

  static String read(File file) throws IOException {
    return new String(Files.readAllBytes(file.toPath()), StandardCharsets.UTF_8);
  }

  File version(int version) {
    File folder = new File(master, "Quillory-Demo-" + version + "-complete");
    folder.mkdir();
    return folder;
  }

  /** A version that came from an archive. */
  File version(int version, String archive) throws IOException {
    File folder = version(version);
    write(new File(folder, "QuilloryArchive"), archive + '\n');
    return folder;
  }

  void settings(String content) throws IOException {
    write(new File(updater, "QuilloryUpdate"), content);
  }

  /** What an earlier start has left, line by line, the folder's name first. */
  File attempt(String stamp, String... lines) throws IOException {
    File file = new File(updates, "try-" + stamp);
    write(file, String.join("\n", lines) + '\n');
    return file;
  }

  /** As quillory-update leaves it: {@code offered} is a version, and {@code withdrawn} are some. */
  void state(String offered, boolean isCritical, String... withdrawn) throws IOException {
    StringBuilder text = new StringBuilder("1\0" + "7\0draw\0" + "0\0" + "0\0etag\0");
    text.append("2\0key\0key\0AVAILABLE\0\0" + "7\0").append(offered).append('\0');
    text.append("1.2\0" + "360000\0").append(isCritical ? "1" : "0").append("\0notes\0\0\0\0" + "0\0");
    text.append(withdrawn.length).append('\0');
    for (String version : withdrawn) {
      text.append(version).append('\0');
    }
    write(new File(updates, "state"), text.toString());
  }

  String trials() throws IOException {
    return read(new File(updates, "trials"));
  }

  /** A program in the updater's folder: a shell script. */
  void program(String name, String script) throws IOException {
    File file = new File(updater, name);
    write(file, "#!/bin/sh\n" + script + '\n');
    file.setExecutable(true);
  }

  /** Those of a start that has read its properties. */
  Updates updates() throws IOException {
    return new Updates(
        properties, LaunchProperties.read(properties), updater, updates, "Demo");
  }

  /** The same start, which has not begun yet what it does about updates. */
  Main start() throws IOException {
    return new Main(properties, LaunchProperties.read(properties), updater, updates, "Demo");
  }
}
