package io.quillory.api;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Consumer;

/** How the application was started, and what it has been asked to open since. */
public final class Launch {
  static final String PROPERTIES_FILE = "quillory.launch.properties";
  private static final String FILE_PREFIX = "QYLaunchProperties-";
  private static final String REQUESTS_PREFIX = "QYOpenRequests-";
  private static final String EMPTY = "\u0004";
  private static final int PAUSE_MILLIS = 500;

  private static final Object LOCK = new Object();
  private static Map<String, String> properties;
  /** What the launcher adds to, and what later starts do where one instance runs. */
  private static final Requests LAUNCHERS = new Requests();
  private static final Requests LATER_STARTS = new Requests();
  private static boolean isFirst = true;

  private Launch() {}

  /**
   * Whether the launcher has started this application.
   *
   * @return false in an IDE, say
   */
  public static boolean isByLauncher() {
    return System.getProperty(PROPERTIES_FILE) != null;
  }

  /**
   * The launch properties: keys such as "qystat_app_name" (set by the installer or the launcher) and
   * "qydyna_url_req" (by the bundle's parameters or the user). Of a key that is there more than
   * once the last value counts.
   *
   * @return in the order of the file, not to be changed; empty outside of the launcher
   */
  public static Map<String, String> properties() {
    synchronized (LOCK) {
      if (properties == null) {
        properties = Collections.unmodifiableMap(readProperties());
      }
      return properties;
    }
  }

  /**
   * The value of a property whose name is given without "qystat_" or "qydyna_"; where both are
   * there, that of the second.
   *
   * @param name such as "app_name"
   * @return the value, or null
   */
  public static String property(String name) {
    String dynamic = properties().get("qydyna_" + name);
    return dynamic != null ? dynamic : properties().get("qystat_" + name);
  }

  /**
   * The URLs, and the files as URLs, that the user wanted opened since the last call. The first call
   * also returns the one that the application was started for. What comes before the first call is
   * not kept, so an application that wants to know calls early. Of an application that was packed
   * with "single-instance" these are also the arguments of later starts, which end as soon as they
   * have handed them over: those that name a file as its URL, others as they are.
   *
   * @return in the order in which they came; empty outside of the launcher
   */
  public static List<String> openRequests() {
    List<String> urls = new ArrayList<String>();
    synchronized (LOCK) {
      if (isFirst) {
        isFirst = false;
        String ofStart = property("url_req");
        if (ofStart != null && !ofStart.isEmpty()) {
          urls.add(ofStart);
        }
        LAUNCHERS.file = makeRequestsFile();
        String ofInstance = System.getProperty("quillory.instance.requests");
        LATER_STARTS.file = ofInstance == null ? null : new File(ofInstance);
      }
      LAUNCHERS.read(urls);
      LATER_STARTS.read(urls);
    }
    return urls;
  }

  /**
   * Tells {@code listener} each of {@link #openRequests()} from now on, half a second after it came
   * at most. It is called on a thread of its own, which does not keep the application alive.
   *
   * @param listener gets a URL
   */
  public static void openRequests(Consumer<String> listener) {
    if (!isByLauncher()) {
      return;
    }
    Thread thread =
        new Thread("Quillory requests") {
          @Override
          public void run() {
            try {
              while (true) {
                for (String url : openRequests()) {
                  listener.accept(url);
                }
                Thread.sleep(PAUSE_MILLIS);
              }
            } catch (InterruptedException e) {
              // Somebody ends all threads.
            }
          }
        };
    thread.setDaemon(true);
    thread.start();
  }

  /** For tests: as in a process that has not asked yet. */
  static void forget() {
    synchronized (LOCK) {
      properties = null;
      LAUNCHERS.file = null;
      LAUNCHERS.read = 0;
      LATER_STARTS.file = null;
      LATER_STARTS.read = 0;
      isFirst = true;
    }
  }

  private static Map<String, String> readProperties() {
    Map<String, String> result = new LinkedHashMap<String, String>();
    String path = System.getProperty(PROPERTIES_FILE);
    byte[] bytes = path == null ? null : contentOf(new File(path));
    if (bytes == null || bytes.length == 0) {
      return result;
    }
    String[] entries = new String(bytes, StandardCharsets.UTF_8).split("\0", -1);
    for (int i = 0; i < entries.length; i += 2) {
      String value = i + 1 < entries.length ? entries[i + 1] : "";
      result.put(entries[i], value.equals(EMPTY) ? "" : value);
    }
    return result;
  }

  /** Where a later start has cleared the file away, the newest one beside it says the same. */
  private static byte[] contentOf(File file) {
    try {
      return Files.readAllBytes(file.toPath());
    } catch (IOException e) {
      String[] names = file.getParentFile() == null ? null : file.getParentFile().list();
      String newest = null;
      for (String name : names == null ? new String[0] : names) {
        if (name.startsWith(FILE_PREFIX) && (newest == null || name.compareTo(newest) > 0)) {
          newest = name;
        }
      }
      try {
        File beside = new File(file.getParentFile(), String.valueOf(newest));
        return newest == null ? null : Files.readAllBytes(beside.toPath());
      } catch (IOException again) {
        return null;
      }
    }
  }

  /** The file to which the launcher adds what comes, each with a zero byte behind it; or null. */
  private static File makeRequestsFile() {
    String path = System.getProperty(PROPERTIES_FILE);
    if (path == null) {
      return null;
    }
    File beside = new File(path);
    if (!beside.getName().startsWith(FILE_PREFIX)) {
      return null;
    }
    String stamp = beside.getName().substring(FILE_PREFIX.length());
    File file = new File(beside.getParentFile(), REQUESTS_PREFIX + stamp);
    try {
      file.createNewFile();
      file.deleteOnExit();
      return file;
    } catch (IOException e) {
      return null; // Nothing more can be heard.
    }
  }

  /** A file to which others add, each request with a zero byte behind it. */
  private static final class Requests {
    private File file;
    private long read;

    /** Adds those that are new. */
    void read(List<String> requests) {
      if (file == null) {
        return;
      }
      try (RandomAccessFile opened = new RandomAccessFile(file, "r")) {
        if (opened.length() <= read) {
          return;
        }
        byte[] bytes = new byte[(int) Math.min(opened.length() - read, 1 << 20)];
        opened.seek(read);
        opened.readFully(bytes);
        int start = 0;
        for (int i = 0; i < bytes.length; i++) {
          if (bytes[i] == 0) {
            requests.add(new String(bytes, start, i - start, StandardCharsets.UTF_8));
            start = i + 1;
          }
        }
        read += start;
      } catch (IOException e) {
        // It is looked at again.
      }
    }
  }
}
