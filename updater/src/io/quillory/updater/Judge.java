package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.channels.OverlappingFileLockException;
import java.nio.charset.StandardCharsets;

/** Says of the starts that have ended what they show of their versions. */
final class Judge {
  /** No start writes as much. */
  private static final int MAX_LENGTH = 4096;
  /** What a shell or a session ends programs with: 128 and SIGHUP, SIGINT, SIGTERM. */
  private static final int[] STATUSES_OF_A_USER = {129, 130, 143};

  private Judge() {}

  /**
   * Takes what the files of earlier starts show into {@code trials}, saves it, and deletes the
   * files. Those of starts that are still running stay.
   *
   * @param names what is in {@code updateFolder}
   */
  static void judge(File updateFolder, File master, String[] names, Trials trials)
      throws IOException {
    File[] judged = new File[names.length];
    RandomAccessFile[] held = new RandomAccessFile[names.length];
    try {
      for (int i = 0; i < names.length; i++) {
        if (names[i].startsWith(Attempt.PREFIX)) {
          File file = new File(updateFolder, names[i]);
          held[i] = judgeOne(file, master, trials);
          judged[i] = held[i] == null ? null : file;
        }
      }
      trials.save();
      for (File file : judged) {
        if (file != null) {
          file.delete();
        }
      }
    } finally {
      for (RandomAccessFile file : held) {
        if (file != null) {
          file.close();
        }
      }
    }
  }

  /**
   * The file of a start that counts now, held so that another start does not count it, too; or null
   * where there is nothing to be said yet.
   */
  private static RandomAccessFile judgeOne(File file, File master, Trials trials)
      throws IOException {
    if (!file.isFile()) {
      return null; // Another start has judged it just now, or it is none of ours.
    }
    RandomAccessFile opened = new RandomAccessFile(file, "rw");
    boolean isJudged = false;
    try {
      boolean isFree = isFree(opened);
      byte[] bytes = new byte[(int) Math.min(opened.length(), MAX_LENGTH)];
      opened.readFully(bytes);
      String[] lines = linesOf(new String(bytes, StandardCharsets.UTF_8));
      // With the lock, and the file still there: no other start has judged it meanwhile.
      isJudged = (isFree || has(lines, Attempt.HEALTHY)) && file.exists();
      if (isJudged && isPlainName(lines[0])) {
        note(lines, new File(master, lines[0]), trials);
      }
    } finally {
      if (!isJudged) {
        opened.close();
      }
    }
    return isJudged ? opened : null;
  }

  /** Whether the process of the file has ended; takes the lock. */
  private static boolean isFree(RandomAccessFile opened) throws IOException {
    try {
      return opened.getChannel().tryLock() != null;
    } catch (OverlappingFileLockException e) {
      return false; // Of this very process.
    }
  }

  private static void note(String[] lines, File folder, Trials trials) {
    String ended = statusIn(lines);
    if (has(lines, Attempt.HEALTHY)) {
      trials.noteGood(folder);
    } else if (has(lines, Attempt.NEUTRAL) || isOfAUser(ended)) {
      trials.noteNeutral(folder);
    } else if ("0".equals(ended)) {
      trials.noteGood(folder);
    } else if (ended == null && (has(lines, Attempt.LASTED) || has(lines, Attempt.CLOSED))) {
      // Killed, or a power cut, when it had been running for a while; or in order, by a launcher
      // that did not say how.
      trials.noteNeutral(folder);
    } else {
      trials.noteBad(folder);
    }
  }

  private static boolean isOfAUser(String status) {
    for (int known : STATUSES_OF_A_USER) {
      if (status != null && status.equals(Integer.toString(known))) {
        return true;
      }
    }
    return false;
  }

  /** What follows "ended " in the last such line, or null. */
  private static String statusIn(String[] lines) {
    String status = null;
    for (String line : lines) {
      if (line.startsWith(Attempt.ENDED)) {
        status = line.substring(Attempt.ENDED.length());
      }
    }
    return status;
  }

  private static boolean has(String[] lines, String wanted) {
    // Not the first one, which is a folder's name.
    for (int i = 1; i < lines.length; i++) {
      if (lines[i].equals(wanted)) {
        return true;
      }
    }
    return false;
  }

  private static boolean isPlainName(String text) {
    return !text.isEmpty() && text.indexOf('/') < 0 && !text.startsWith(".");
  }

  /** At least one; only what a line feed ends is a line. */
  private static String[] linesOf(String text) {
    int count = 0;
    for (int i = 0; i < text.length(); i++) {
      count += text.charAt(i) == '\n' ? 1 : 0;
    }
    String[] lines = new String[Math.max(count, 1)];
    lines[0] = "";
    int start = 0;
    for (int i = 0; i < count; i++) {
      int end = text.indexOf('\n', start);
      lines[i] = text.substring(start, end);
      start = end + 1;
    }
    return lines;
  }
}
