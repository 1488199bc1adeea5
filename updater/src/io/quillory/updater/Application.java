package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.net.MalformedURLException;
import java.util.List;

/**
 * An installed application, run in this JVM. The launcher has put the version that is most likely to
 * be chosen on the class path that the JVM has begun with, because much of Java looks for an
 * application's classes only there: handlers of URLs and of logging, services, JNI, class data
 * archives. Which version that was it says in a system property.
 */
final class Application {
  /** What the launcher has put on the class path: a version folder, or "". */
  static final String ON_CLASS_PATH = "quillory.application";

  /** In the process that another updater has started: the version that was chosen there. */
  static final String CHOSEN = "quillory.chosen";

  private final Method main;

  private Application(Method main) {
    this.main = main;
  }

  /** Whether the launcher has put another version on the class path than the one in a folder. */
  static boolean isOtherThan(File folder) {
    String known = System.getProperty(ON_CLASS_PATH);
    return known != null && (known.isEmpty() || !new File(known).equals(folder));
  }

  /** The one in a version folder; the message of the exception says why it cannot be started. */
  static Application in(File folder, LaunchFile launchFile) throws IOException {
    boolean isOnClassPath = System.getProperty(ON_CLASS_PATH) != null && !isOtherThan(folder);
    // As with "java -m": what is on the module path is not on the class path.
    boolean isModule = isOnClassPath && launchFile.module() != null;
    System.setProperty(
        "java.class.path", isModule ? "" : classPathOf(folder, launchFile.classPath));
    ClassLoader loader =
        isOnClassPath
            ? ClassLoader.getSystemClassLoader()
            : loaderOfItsOwn(folder, launchFile.classPath);
    if (isOnClassPath && launchFile.agent() != null) {
      LauncherAgent.load(new File(folder, launchFile.agent()));
    }
    return new Application(mainMethod(launchFile.mainClass, folder, loader));
  }

  /** Runs the main class on this thread; throws what its main method throws. */
  void run(String[] arguments) throws Throwable {
    try {
      main.invoke(null, (Object) arguments);
    } catch (InvocationTargetException e) {
      throw e.getCause();
    }
  }

  /** It finds its class path where it would find it if it had been started alone. */
  private static String classPathOf(File folder, List<String> entries) {
    StringBuilder text = new StringBuilder();
    for (int i = 0; i < entries.size(); i++) {
      text.append(i == 0 ? "" : File.pathSeparator);
      text.append(new File(folder, entries.get(i)).getPath());
    }
    return text.toString();
  }

  /** For launchers that know nothing of applications: it sees the platform, but not the updater. */
  private static ClassLoader loaderOfItsOwn(File folder, List<String> entries)
      throws MalformedURLException {
    // Never closed: the application may have threads that outlive its main method.
    ClassLoader loader = new OwnLoader(folder, entries);
    Thread.currentThread().setContextClassLoader(loader);
    return loader;
  }

  private static Method mainMethod(String name, File folder, ClassLoader loader)
      throws IOException {
    try {
      // Not initialised yet: what goes wrong in its own code is the application's to report.
      Method main = Class.forName(name, false, loader).getMethod("main", String[].class);
      if (!Modifier.isStatic(main.getModifiers()) || main.getReturnType() != void.class) {
        throw new IOException("The main method of " + name + " is not \"static void\".");
      }
      main.setAccessible(true); // The class itself need not be public.
      return main;
    } catch (ClassNotFoundException e) {
      throw new IOException("There is no class \"" + name + "\" in " + folder + ".");
    } catch (NoSuchMethodException e) {
      throw new IOException("The class " + name + " has no public main method.");
    } catch (LinkageError e) {
      throw new IOException("The class " + name + " cannot be loaded: " + e);
    }
  }
}
