package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;

/** What "java -jar" does for a jar whose manifest has Launcher-Agent-Class. */
final class LauncherAgent {
  private LauncherAgent() {}

  /**
   * Runs the agentmain method of the jar's agent. Nothing is done on Java 8, which knows no such
   * agents, and where the runtime has no module java.instrument; "java -jar" does the same.
   */
  static void load(File jar) throws IOException {
    try {
      Class.forName("sun.instrument.InstrumentationImpl", false, null)
          .getMethod("loadAgent", String.class)
          .invoke(null, jar.getPath());
    } catch (ClassNotFoundException | NoSuchMethodException e) {
      // As it says above.
    } catch (InvocationTargetException e) {
      throw new IOException("The agent of " + jar + " failed: " + e.getCause());
    } catch (IllegalAccessException e) {
      throw new IOException("The agent of " + jar + " cannot be loaded: " + e.getMessage());
    }
  }
}
