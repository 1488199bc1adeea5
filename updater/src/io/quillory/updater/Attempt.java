package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;

/**
 * The start of a version that is not known to be good: a file "try-…" that is on the disk before
 * the application's code runs. A line each for what is known of the start: first the folder's name;
 * then "lasted", "healthy" or "neutral" as it happens; and at the end "closed", and by the launcher
 * "ended" and the exit status. A later start judges it.
 */
final class Attempt {
  static final String PREFIX = "try-";
  static final String LASTED = "lasted";
  static final String HEALTHY = "healthy";
  static final String NEUTRAL = "neutral";
  static final String CLOSED = "closed";
  static final String ENDED = "ended ";

  /** An end in order, which only a launcher knows more about that has learned to. */
  private static final class Closing extends Thread {
    private final Attempt attempt;

    Closing(Attempt attempt) {
      super("Quillory end");
      this.attempt = attempt;
    }

    @Override
    public void run() {
      try {
        attempt.note(CLOSED);
      } catch (IOException e) {
        // A full disk, say.
      }
    }
  }

  private static Attempt ofThisProcess;

  final File file;
  /** Open, and its file locked, until the process ends: by that others know that it runs. */
  private final RandomAccessFile opened;

  private Attempt(File file, RandomAccessFile opened) {
    this.file = file;
    this.opened = opened;
  }

  /**
   * The one of this start, with {@code stamp} for its name: what the name of the launch-properties
   * file ends with, by which the launcher finds it. Unlike a process number it is not used again.
   */
  static Attempt begin(File updateFolder, String stamp, String versionFolder) throws IOException {
    File file = new File(updateFolder, PREFIX + stamp);
    RandomAccessFile opened = new RandomAccessFile(file, "rw");
    opened.getChannel().tryLock();
    Attempt attempt = new Attempt(file, opened);
    ofThisProcess = attempt;
    attempt.note(versionFolder);
    opened.getFD().sync();
    Runtime.getRuntime().addShutdownHook(new Closing(attempt));
    return attempt;
  }

  /** Of the start of this process, where its version is on trial. */
  static void noteNeutralEnd() {
    if (ofThisProcess == null) {
      return;
    }
    try {
      ofThisProcess.note(NEUTRAL);
    } catch (IOException e) {
      // A full disk: it then counts as an end in order.
    }
  }

  /** Adds a line. */
  synchronized void note(String line) throws IOException {
    opened.seek(opened.length());
    opened.write((line + '\n').getBytes(StandardCharsets.UTF_8));
  }
}
