package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * Makes an application's archive of classes from the list that one of its starts has left: a process
 * of its own, in which nothing of the application runs. An archive gets its name when it is complete
 * and on the disk, and a JVM has begun with it; and it counts by the file beside it that says what
 * it was made of, which comes last. docs/formats/startup-archive.md has these files.
 */
public final class ArchiveMaker {
  private static final String PREFIX = "StartupArchive-";
  private static final String NEW = ".new";
  private static final long ABANDONED_AFTER_MILLIS = 3_600_000;
  /** From here on the JVM writes places of classes as it reads them. */
  private static final int JAVA_THAT_KNOWS_BLANKS = 20;

  private final File base;
  private final String fingerprint;
  private final String classPath;
  private final String program = new File(System.getProperty("java.home"), "bin/java").getPath();
  private final File master;
  private final boolean mayLink;
  private final List<Path> links = new ArrayList<Path>();

  /**
   * {@code base} is the place of the archive without its ending; {@code mayLink} whether the JVMs
   * that are to use it take one with linked classes.
   */
  ArchiveMaker(File base, String fingerprint, String classPath, File master, boolean mayLink) {
    this.base = base;
    this.fingerprint = fingerprint;
    this.classPath = classPath;
    this.master = master;
    this.mayLink = mayLink;
  }

  /** Gets what the constructor gets. */
  public static void main(String[] arguments) throws IOException, InterruptedException {
    boolean mayLink = arguments.length > 4 && Boolean.parseBoolean(arguments[4]);
    new ArchiveMaker(
            new File(arguments[0]), arguments[1], arguments[2], new File(arguments[3]), mayLink)
        .make();
  }

  void make() throws IOException, InterruptedException {
    clear();
    File classes = beside(".classes");
    File list = File.createTempFile(base.getName() + "-", NEW, base.getParentFile());
    File archive = File.createTempFile(base.getName() + "-", NEW, base.getParentFile());
    try {
      writeWholeLines(classes, list);
      addLinks();
      boolean isGood = mayLink && isMade(list, archive, "-XX:+AOTClassLinking");
      publish(archive, isGood || isMade(list, archive, "-Xshare:dump"));
    } finally {
      for (Path link : links) {
        Files.deleteIfExists(link);
      }
      list.delete();
      archive.delete();
      classes.delete();
    }
  }

  /** Whether there is an archive now that a JVM can use; {@code option} is one more for making it. */
  private boolean isMade(File list, File archive, String option)
      throws IOException, InterruptedException {
    archive.delete(); // The JVM replaces no file.
    // A JVM that has to use it, and ends with this class's status, can use it.
    return run("-Xshare:dump", option, "-XX:SharedClassListFile=" + list,
            "-XX:SharedArchiveFile=" + archive, "-cp", classPath) == 0
        && run("-Xshare:on", "-XX:SharedArchiveFile=" + archive, "-cp", classPath,
            "io.quillory.updater.JreCompatibility") == JreCompatibility.COMPATIBLE;
  }

  private File beside(String ending) {
    return new File(base.getPath() + ending);
  }

  private int run(String... arguments) throws IOException, InterruptedException {
    List<String> command = new ArrayList<String>();
    command.add(program);
    for (String argument : arguments) {
      command.add(argument);
    }
    File nothing = new File("/dev/null");
    return new ProcessBuilder(command)
        .redirectInput(nothing)
        .redirectOutput(nothing)
        .redirectError(nothing)
        .start()
        .waitFor();
  }

  /** The JVM that writes the list may still run, and be in the middle of a line. */
  private static void writeWholeLines(File from, File to) throws IOException {
    byte[] bytes = Files.readAllBytes(from.toPath());
    int length = bytes.length;
    while (length > 0 && bytes[length - 1] != '\n') {
      length--;
    }
    Files.write(to.toPath(), Arrays.copyOf(bytes, length));
  }

  /** Where none could be made nobody tries again, until something of the fingerprint changes. */
  private void publish(File archive, boolean isGood) throws IOException {
    File named = beside(".jsa");
    if (isGood) {
      RandomAccessFile file = new RandomAccessFile(archive, "r");
      try {
        file.getFD().sync();
      } finally {
        file.close();
      }
      if (!archive.renameTo(named)) {
        throw new IOException(archive + " cannot be renamed.");
      }
    }
    long length = isGood ? named.length() : 0;
    long seconds = isGood ? named.lastModified() / 1000 : 0;
    SyncedFile.replace(
        beside(".guard"), "1\0" + fingerprint + '\0' + length + '\0' + seconds + '\0');
  }

  /** What is left of versions that have gone, and of makers that were killed. */
  private void clear() {
    File folder = base.getParentFile();
    String[] names = folder.list();
    if (names == null) {
      return;
    }
    long now = System.currentTimeMillis();
    for (String name : names) {
      int end = name.lastIndexOf('.');
      if (!name.startsWith(PREFIX) || end < PREFIX.length()) {
        continue;
      }
      File file = new File(folder, name);
      boolean isAbandoned =
          name.endsWith(NEW)
              ? now - file.lastModified() > ABANDONED_AFTER_MILLIS
              : !new File(master, name.substring(PREFIX.length(), end)).isDirectory();
      if (isAbandoned) {
        file.delete();
      }
    }
  }

  /**
   * Before Java 20, a JVM that makes an archive takes the place that a class comes from, as a URL
   * has it, for a path, and leaves out classes of folders with blanks: it finds them by links with
   * such names. Only where it makes the archive are they of use.
   */
  private void addLinks() throws IOException {
    if (versionOfJava() >= JAVA_THAT_KNOWS_BLANKS) {
      return;
    }
    for (String entry : classPath.split(File.pathSeparator)) {
      for (File part = new File(entry); part.getParentFile() != null; part = part.getParentFile()) {
        String name = part.getName();
        String asUrl = part.toURI().getRawPath();
        asUrl = asUrl.endsWith("/") ? asUrl.substring(0, asUrl.length() - 1) : asUrl;
        asUrl = asUrl.substring(asUrl.lastIndexOf('/') + 1);
        if (!asUrl.equals(name)) {
          addLink(part.toPath().resolveSibling(asUrl), name);
        }
      }
    }
  }

  private void addLink(Path link, String target) {
    try {
      if (!Files.exists(link, LinkOption.NOFOLLOW_LINKS)) {
        Files.createSymbolicLink(link, new File(target).toPath());
        links.add(link);
      }
    } catch (IOException e) {
      // A folder that is not the user's: the archive then holds the JDK's classes alone.
    }
  }

  private static int versionOfJava() {
    return (int) Records.numberAtStartOf(System.getProperty("java.specification.version"));
  }
}
