package io.quillory.updater;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.channels.OverlappingFileLockException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.util.concurrent.locks.LockSupport;

/**
 * An application of which one instance runs for each user: later starts hand over what they were
 * asked to open, and end. Who runs holds a lock, which the system takes back when it ends in whatever
 * way. What is handed over stands in a file beside it, each with a zero byte behind it, which the
 * application reads by its API. Both are the user's own; where somebody else has put something in
 * their place, a start goes on as if there were no other.
 */
final class SingleInstance {
  private static final String LOCK_PREFIX = "QYInstance-";
  private static final String REQUESTS_PREFIX = "QYInstanceRequests-";
  /** Read by quillory-api.jar. */
  private static final String REQUESTS_PROPERTY = "quillory.instance.requests";

  /** An instance that ends within so long after it was handed something may not have read it. */
  private static final long NANOS_OF_LAST_LOOKS = 1_000_000_000L;
  private static final long NANOS_BETWEEN_LOOKS = 50_000_000L;

  /** Until the process ends. */
  static RandomAccessFile held;

  private SingleInstance() {}

  /**
   * Whether this start is over, because another instance has got {@code requests}. Otherwise this one
   * is the instance from now on.
   *
   * @param folder where this user's starts write
   * @param ofThisStart a file that this start has made
   */
  static boolean isHandedOver(File folder, File ofThisStart, String[] requests) {
    String user = plainName(System.getProperty("user.name", ""));
    File lock = new File(folder, LOCK_PREFIX + user);
    File place = new File(folder, REQUESTS_PREFIX + user);
    try {
      if (!isOfSameUser(lock, ofThisStart) || !isOfSameUser(place, ofThisStart)) {
        return false;
      }
      RandomAccessFile opened = new RandomAccessFile(lock, "rw");
      if (!isTaken(opened)) {
        begin(opened, place);
        return false;
      }
      handOver(place, requests);
      for (long waited = 0; waited < NANOS_OF_LAST_LOOKS; waited += NANOS_BETWEEN_LOOKS) {
        LockSupport.parkNanos(NANOS_BETWEEN_LOOKS);
        if (!isTaken(opened)) {
          begin(opened, place); // It was about to end: this start is not for nothing.
          return false;
        }
      }
      opened.close();
      return true;
    } catch (IOException e) {
      return false; // A full disk, say: one instance too many is better than none.
    }
  }

  private static boolean isTaken(RandomAccessFile opened) throws IOException {
    try {
      return opened.getChannel().tryLock() == null;
    } catch (OverlappingFileLockException e) {
      return true; // By this very process.
    }
  }

  private static void begin(RandomAccessFile opened, File place) throws IOException {
    held = opened;
    new FileOutputStream(place).close(); // What was for an earlier instance is over.
    System.setProperty(REQUESTS_PROPERTY, place.getPath());
  }

  /** In one piece, so that two starts do not mix theirs. */
  private static void handOver(File place, String[] requests) throws IOException {
    StringBuilder text = new StringBuilder();
    for (String request : requests) {
      text.append(request).append('\0');
    }
    FileOutputStream out = new FileOutputStream(place, true);
    try {
      out.write(text.toString().getBytes(StandardCharsets.UTF_8));
    } finally {
      out.close();
    }
  }

  /** What is not there yet is made by this user. */
  private static boolean isOfSameUser(File file, File own) throws IOException {
    Path path = file.toPath();
    if (!Files.exists(path, LinkOption.NOFOLLOW_LINKS)) {
      return true;
    }
    return Files.isRegularFile(path, LinkOption.NOFOLLOW_LINKS)
        && Files.getOwner(path, LinkOption.NOFOLLOW_LINKS).equals(Files.getOwner(own.toPath()));
  }

  /** For a file's name. */
  private static String plainName(String user) {
    return user.replace('/', '_').replace('\0', '_');
  }

  /**
   * What a start was asked to open: the URL of its properties, and the user's arguments. One that
   * names a file that is there becomes that file's URL, because the other instance is in another
   * folder; all others are handed over as they are.
   */
  static String[] requestsOf(LaunchProperties properties, String[] arguments, int first) {
    String url = properties.get("qydyna_url_req");
    boolean hasUrl = url != null && !url.isEmpty();
    String[] requests = new String[arguments.length - first + (hasUrl ? 1 : 0)];
    int count = 0;
    if (hasUrl) {
      requests[count++] = url;
    }
    for (int i = first; i < arguments.length; i++) {
      File file = new File(arguments[i]);
      requests[count++] = file.exists() ? file.getAbsoluteFile().toURI().toString() : arguments[i];
    }
    return requests;
  }
}
