package com.example.hello;

import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;

/**
 * Says on the console what it was given, and shows the same in a window where there is a display.
 *
 * <pre>
 * --console         no window
 * --close-after=MS  close the window after so many milliseconds
 * </pre>
 *
 * <p>Nothing of the windowing toolkit is named here, so that it also runs in a runtime without one.
 */
public final class Hello {
  private static final String CLOSE_AFTER = "--close-after=";

  private Hello() {}

  public static void main(String[] args) throws IOException {
    Launch launch = Launch.of(args);
    print(describe(launch));
    if (!launch.arguments.contains("--console") && hasDisplay()) {
      showWindow(launch, closeAfterMillis(launch));
    }
  }

  private static String describe(Launch launch) {
    StringBuilder text = new StringBuilder("Hello from Java ");
    text.append(System.getProperty("java.version")).append('\n');
    text.append("class path: ").append(System.getProperty("java.class.path")).append('\n');
    text.append("arguments: ").append(launch.arguments.size()).append('\n');
    for (int i = 0; i < launch.arguments.size(); i++) {
      text.append("  ").append(i + 1).append(": ").append(launch.arguments.get(i)).append('\n');
    }
    text.append("launch properties: ").append(launch.propertiesPath).append('\n');
    if (launch.problem != null) {
      text.append("  none (").append(launch.problem).append(")\n");
    }
    for (int i = 0; i + 1 < launch.properties.size(); i += 2) {
      text.append("  ").append(launch.properties.get(i)).append(" = ");
      text.append(launch.properties.get(i + 1)).append('\n');
    }
    String url = launch.requestedUrl();
    return text.append("url request: ").append(url == null ? "none" : url).append('\n').toString();
  }

  /** In one piece, and as UTF-8 whatever the locale: launch properties are UTF-8. */
  private static void print(String text) throws IOException {
    new FileOutputStream(FileDescriptor.out).write(text.getBytes(StandardCharsets.UTF_8));
  }

  private static boolean hasDisplay() {
    if (Boolean.getBoolean("java.awt.headless")) {
      return false;
    }
    if (System.getProperty("os.name").startsWith("Mac")) {
      return true;
    }
    String display = System.getenv("DISPLAY");
    return display != null && !display.isEmpty();
  }

  /** 0 when the window stays until it is closed. */
  private static int closeAfterMillis(Launch launch) {
    for (String argument : launch.arguments) {
      if (argument.startsWith(CLOSE_AFTER)) {
        try {
          return Integer.parseInt(argument.substring(CLOSE_AFTER.length()));
        } catch (NumberFormatException e) {
          System.err.println("No number of milliseconds: " + argument);
        }
      }
    }
    return 0;
  }

  private static void showWindow(Launch launch, int closeAfterMillis) {
    try {
      HelloWindow.show(launch, closeAfterMillis);
    } catch (LinkageError e) {
      System.err.println("No window: this Java runtime has no windowing toolkit.");
    } catch (IllegalStateException e) {
      System.err.println("No window: " + e.getMessage());
    }
  }
}
