package sample;

import java.lang.instrument.Instrumentation;

/** Notes what it finds. */
public final class Agent {
  private Agent() {}

  public static void agentmain(String argument, Instrumentation instrumentation) {
    boolean isLoaded = false;
    for (Class<?> loaded : instrumentation.getAllLoadedClasses()) {
      isLoaded |= loaded.getName().equals("sample.Sample");
    }
    System.setProperty("sample.agent", "has instrumentation: true, main loaded: " + isLoaded);
  }
}
