package com.example.hello;

import io.quillory.api.Updates;
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
 * --stay=MS         without a window stay for so many milliseconds, and print news of updates
 * --update-now      ask for an update at once, and load it
 * </pre>
 *
 * <p>Nothing of the windowing toolkit is named here, so that it also runs in a runtime without one.
 */
public final class Hello {
  private static final String CLOSE_AFTER = "--close-after=";
  private static final String STAY = "--stay=";

  private Hello() {}

  public static void main(String[] args) throws IOException {
    Launch launch = Launch.of(args);
    print(describe(launch));
    boolean hasWindow = !launch.arguments.contains("--console") && hasDisplay();
    if (hasWindow) {
      showWindow(launch, millisOf(CLOSE_AFTER, launch));
    }
    printNews(Updates.get(), launch);
    int stay = millisOf(STAY, launch);
    if (!hasWindow && stay > 0) {
      // Nothing shows to others that it is well: it has to say so.
      Updates.get().markHealthy();
      sleep(stay);
    }
  }

  private static void printNews(Updates updates, Launch launch) {
    printLine(UpdateNews.atStart(updates));
    updates.addListener(state -> printLine(UpdateNews.of(state, updates.release())));
    if (launch.arguments.contains("--update-now")) {
      updates.download();
    }
  }

  private static void printLine(String news) {
    try {
      print(news.isEmpty() ? "" : news + '\n');
    } catch (IOException e) {
      // Nobody reads it.
    }
  }

  private static void sleep(int millis) {
    try {
      Thread.sleep(millis);
    } catch (InterruptedException e) {
      Thread.currentThread().interrupt();
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

  /** The number in the argument that begins like this; 0 without one. */
  private static int millisOf(String option, Launch launch) {
    for (String argument : launch.arguments) {
      if (argument.startsWith(option)) {
        try {
          return Integer.parseInt(argument.substring(option.length()));
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
