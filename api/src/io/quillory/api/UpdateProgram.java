package io.quillory.api;

import java.io.BufferedReader;
import java.io.File;
import java.io.IOException;
import java.io.InputStreamReader;
import java.lang.reflect.Method;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/** quillory-update, which alone talks to the network and writes versions. */
final class UpdateProgram {
  /** Hears the lines of a run, on its thread. */
  interface Lines {
    void line(Line line);
  }

  static final int FAILED = 1;
  static final int BUSY = 75;

  private final String program;
  private final String properties;
  private final String ownFolder;
  private Process running;

  UpdateProgram(String program, String properties, File updateFolder) {
    this.program = program;
    this.properties = properties;
    this.ownFolder = updateFolder.getParent();
  }

  /** Runs a command to its end, and returns its exit status; FAILED where it cannot be started. */
  int run(List<String> command, Lines lines) {
    List<String> all = new ArrayList<String>();
    all.add(program);
    all.addAll(command);
    all.addAll(Arrays.asList("--properties", properties, "--own-folder", ownFolder));
    try {
      Process process = started(all);
      read(process, lines);
      return process.waitFor();
    } catch (IOException e) {
      lines.line(new Line("failed reason=" + program.replace(" ", "%20")));
      return FAILED;
    } catch (InterruptedException e) {
      Thread.currentThread().interrupt();
      return FAILED;
    } finally {
      synchronized (this) {
        running = null;
      }
    }
  }

  private static void read(Process process, Lines lines) {
    try {
      BufferedReader reader =
          new BufferedReader(
              new InputStreamReader(process.getInputStream(), StandardCharsets.UTF_8));
      for (String text; (text = reader.readLine()) != null; ) {
        lines.line(new Line(text));
      }
    } catch (IOException e) {
      // Cancelled, which closes the stream; its end is still to come.
    }
  }

  private synchronized Process started(List<String> command) throws IOException {
    File nothing = new File("/dev/null");
    running = new ProcessBuilder(command).redirectInput(nothing).redirectError(nothing).start();
    return running;
  }

  /** Ends a run, which keeps what it has loaded. */
  synchronized void cancel() {
    if (running != null) {
      running.destroy();
    }
  }

  /** Lets {@code launcher} be started when this process has ended. */
  boolean restart(String launcher) {
    String pid = ownPid();
    if (pid == null) {
      return false;
    }
    File nothing = new File("/dev/null");
    try {
      new ProcessBuilder(program, "restart", "--wait", pid, "--", launcher)
          .redirectInput(nothing)
          .redirectOutput(nothing)
          .redirectError(nothing)
          .start();
      return true;
    } catch (IOException e) {
      return false;
    }
  }

  /** The number of this process, also of Java 8, where nobody is asked for it but the system. */
  private static String ownPid() {
    try {
      Class<?> type = Class.forName("java.lang.ProcessHandle");
      Object current = type.getMethod("current").invoke(null);
      return String.valueOf(type.getMethod("pid").invoke(current));
    } catch (ReflectiveOperationException e) {
      return pidOfJava8();
    }
  }

  private static String pidOfJava8() {
    File self = new File("/proc/self");
    try {
      if (self.exists()) {
        return self.getCanonicalFile().getName();
      }
      Class<?> factory = Class.forName("java.lang.management.ManagementFactory");
      Object bean = factory.getMethod("getRuntimeMXBean").invoke(null);
      Method name = Class.forName("java.lang.management.RuntimeMXBean").getMethod("getName");
      return String.valueOf(name.invoke(bean)).split("@")[0];
    } catch (IOException | ReflectiveOperationException e) {
      return null;
    }
  }
}
