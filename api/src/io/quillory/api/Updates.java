package io.quillory.api;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.function.BooleanSupplier;

/**
 * The updates of this application.
 *
 * <pre>
 * Updates updates = Updates.get();
 * updates.addListener(state -&gt; EventQueue.invokeLater(() -&gt; show(state, updates.release())));
 * </pre>
 *
 * <p>Nothing here waits for the network: what takes long is done by a process of its own, and
 * listeners hear of it. An update never touches what runs; it is what the next start finds. Where
 * the application was not started by the launcher, or without settings for updates, the phase stays
 * {@link UpdateState.Phase#NONE} and every call does nothing. All methods may be called by any
 * thread.
 */
public final class Updates {
  private static final int PAUSE_MILLIS = 2000;
  private static final Updates INSTANCE = new Updates();

  private final String mode = System.getProperty("quillory.update.mode");
  private final File folder = fileOf("quillory.update.folder");
  private final File versionFolder = fileOf("quillory.version.folder");
  private final File attempt = fileOf("quillory.try.file");
  private final UpdateProgram program = program();
  private final List<String> passedOver = passedOver();
  private final List<UpdateListener> listeners = new CopyOnWriteArrayList<UpdateListener>();

  // Guarded by this.
  private UpdateState ofRun;
  private boolean isRunning;
  private boolean isWatching;
  private Release lastOffer;
  private UpdateState lastTold;

  Updates() {}

  /**
   * Those of this application.
   *
   * @return always the same object, also outside of the launcher
   */
  public static Updates get() {
    return INSTANCE;
  }

  /**
   * What is known now.
   *
   * @return never null
   */
  public UpdateState state() {
    if (folder == null) {
      return UpdateState.NOTHING;
    }
    synchronized (this) {
      if (ofRun != null) {
        return ofRun;
      }
    }
    if (readyVersion() != null) {
      return new UpdateState(UpdateState.Phase.STAGED, "", 0, 0, 0);
    }
    UpdateState left = StateFile.read(folder).state;
    if ("off".equals(mode)) {
      return new UpdateState(UpdateState.Phase.OFF, left.reason(), 0, 0, 0);
    }
    return left;
  }

  /**
   * The release that is offered, loaded or ready.
   *
   * @return null where there is none
   */
  public Release release() {
    if (folder == null) {
      return null;
    }
    Release offer = StateFile.read(folder).offer;
    String ready = readyVersion();
    synchronized (this) {
      if (offer != null) {
        lastOffer = offer;
      }
      if (ready == null) {
        return offer;
      }
      // What is in its place is no longer offered: of what it was called only this object knows.
      boolean isKnown = lastOffer != null && lastOffer.version().equals(ready);
      return isKnown
          ? new Release(lastOffer.number(), ready, lastOffer.shownVersion(), 0,
              lastOffer.isCritical(), lastOffer.notes())
          : new Release(0, ready, "", 0, false, "");
    }
  }

  /** Asks the server now. Returns at once; one run at a time, others are left out. */
  public void check() {
    start(UpdateState.Phase.CHECKING, "check");
  }

  /** Asks the server, and loads and prepares what it offers for the next start. Returns at once. */
  public void download() {
    start(UpdateState.Phase.CHECKING, "install");
  }

  /** Ends what {@link #check()} or {@link #download()} began; what has been loaded is kept. */
  public void cancel() {
    if (program != null) {
      program.cancel();
    }
  }

  /** Never offers the present {@link #release()} unasked again. Critical releases come anyway. */
  public void skip() {
    Release release = release();
    if (release != null) {
      start(null, "skip", release.version());
    }
  }

  /** Offers nothing unasked for a day. */
  public void remindLater() {
    start(null, "remind-later");
  }

  /**
   * Offers nothing unasked for some hours.
   *
   * @param hours 0 to 8760
   */
  public void remindLater(int hours) {
    start(null, "remind-later", Integer.toString(hours));
  }

  /**
   * Takes releases of another channel from now on.
   *
   * @param name such as "stable" or "beta"
   */
  public void setChannel(String name) {
    start(null, "set-channel", name);
  }

  /**
   * Ends this process with status 0 and starts the application again, as soon as its windows may go.
   * Without anything that is ready nothing happens.
   *
   * @param canQuit asked right before the end, on this thread; false is the user's "not now"
   * @return false where the process goes on; else it does not return
   */
  public boolean restartToUpdate(BooleanSupplier canQuit) {
    String launcher = Launch.property("launched_from_dynprops");
    if (program == null || launcher == null || readyVersion() == null) {
      return false;
    }
    if (!canQuit.getAsBoolean()) {
      return false;
    }
    note("neutral");
    if (!program.restart(launcher)) {
      return false;
    }
    System.exit(0);
    return true;
  }

  /**
   * Hears of changes, those by other processes within two seconds. In the mode "ask" an application
   * with a listener asks its user itself; for one without, a window of the updater's does.
   *
   * @param listener is told on a thread that does not keep the application alive
   */
  public void addListener(UpdateListener listener) {
    listeners.add(listener);
    System.setProperty("quillory.update.listener", "true");
    synchronized (this) {
      if (folder == null || isWatching) {
        return;
      }
      isWatching = true;
      lastTold = state();
    }
    startThread(new Watch());
  }

  /**
   * No longer tells {@code listener}.
   *
   * @param listener one that was added
   */
  public void removeListener(UpdateListener listener) {
    listeners.remove(listener);
  }

  /**
   * Says that this version works, so that it need not be guessed. Without it a version counts as
   * good when it has shown a window for twenty seconds, or has ended with status 0.
   */
  public void markHealthy() {
    note("healthy");
  }

  /**
   * The version before, in the first start of a new one.
   *
   * @return null in every other start
   */
  public String justUpdatedFrom() {
    return System.getProperty("quillory.updated.from");
  }

  /**
   * The version that did not start twice, in the start that goes back to an earlier one.
   *
   * @return null in every other start
   */
  public String wentBackFrom() {
    return System.getProperty("quillory.went.back.from");
  }

  private static File fileOf(String property) {
    String path = System.getProperty(property);
    return path == null ? null : new File(path);
  }

  private UpdateProgram program() {
    String path = System.getProperty("quillory.update.program");
    String properties = System.getProperty(Launch.PROPERTIES_FILE);
    return path == null || properties == null || folder == null
        ? null
        : new UpdateProgram(path, properties, folder);
  }

  /** The version of the newest folder, where that is newer than the one that runs; or null. */
  private String readyVersion() {
    if (versionFolder == null) {
      return null;
    }
    String own = versionFolder.getName();
    String end = "-complete";
    int before = own.indexOf('-', own.indexOf('-') + 1) + 1;
    String[] names = versionFolder.getParentFile().list();
    if (before == 0 || !own.endsWith(end) || names == null) {
      return null;
    }
    String prefix = own.substring(0, before);
    String newest = null;
    long highest = numberOf(own.substring(before, own.length() - end.length()));
    for (String name : names) {
      if (name.startsWith(prefix) && name.endsWith(end) && !passedOver.contains(name)) {
        String version = name.substring(before, Math.max(name.length() - end.length(), before));
        if (numberOf(version) > highest) {
          highest = numberOf(version);
          newest = version;
        }
      }
    }
    return newest;
  }

  /** The folders of versions that the updater has not started, because it must not. */
  private static List<String> passedOver() {
    String names = System.getProperty("quillory.passed.over");
    return names == null ? new ArrayList<String>() : Arrays.asList(names.split("/"));
  }

  private static long numberOf(String version) {
    int end = 0;
    while (end < version.length() && end < 18 && Character.digit(version.charAt(end), 10) >= 0) {
      end++;
    }
    return end == 0 ? 0 : Long.parseLong(version.substring(0, end));
  }

  /** A run of the program; {@code phase} is what is told meanwhile, if anything. */
  private void start(final UpdateState.Phase phase, final String... command) {
    synchronized (this) {
      if (program == null || isRunning) {
        return;
      }
      isRunning = true;
      if (phase != null) {
        ofRun = new UpdateState(phase, "", 0, 0, 0);
      }
    }
    startThread(new Run(Arrays.asList(command), phase != null));
  }

  private static void startThread(Runnable work) {
    Thread thread = new Thread(work, "Quillory updates of the application");
    thread.setDaemon(true);
    thread.start();
  }

  private final class Run implements Runnable, UpdateProgram.Lines {
    private final List<String> command;
    private final boolean isTold;

    Run(List<String> command, boolean isTold) {
      this.command = command;
      this.isTold = isTold;
    }

    @Override
    public void run() {
      if (isTold) {
        tell();
      }
      program.run(command, this);
      synchronized (Updates.this) {
        ofRun = null;
        isRunning = false;
      }
      tell();
    }

    @Override
    public void line(Line line) {
      UpdateState.Phase phase;
      if (line.word.equals("progress")) {
        phase = UpdateState.Phase.DOWNLOADING;
      } else if (line.word.equals("phase") && line.get("name").equals("DOWNLOADING")) {
        phase = UpdateState.Phase.DOWNLOADING;
      } else {
        return;
      }
      synchronized (Updates.this) {
        ofRun = new UpdateState(phase, "", 0, line.number("done"), line.number("total"));
      }
      tell();
    }
  }

  /** Looks for what other processes have changed. */
  private final class Watch implements Runnable {
    @Override
    public void run() {
      try {
        while (true) {
          Thread.sleep(PAUSE_MILLIS);
          if (!state().equals(lastTold())) {
            tell();
          }
        }
      } catch (InterruptedException e) {
        // Somebody ends all threads.
      }
    }
  }

  private synchronized UpdateState lastTold() {
    return lastTold;
  }

  private void tell() {
    UpdateState state = state();
    synchronized (this) {
      lastTold = state;
    }
    for (UpdateListener listener : listeners) {
      try {
        listener.changed(state);
      } catch (RuntimeException e) {
        // The listener's own matter, and told where the application tells such.
        Thread.UncaughtExceptionHandler handler =
            Thread.currentThread().getUncaughtExceptionHandler();
        handler.uncaughtException(Thread.currentThread(), e);
      }
    }
  }

  /** Adds a line to the file of this start, where there is one. */
  private void note(String line) {
    if (attempt == null || !attempt.isFile()) {
      return; // This version is known to be good.
    }
    try (FileOutputStream out = new FileOutputStream(attempt, true)) {
      out.write((line + '\n').getBytes(StandardCharsets.UTF_8));
    } catch (IOException e) {
      // A full disk, say: the end of the process may still say it.
    }
  }
}
