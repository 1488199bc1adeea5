package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;
import java.security.AllPermission;
import java.security.CodeSource;
import java.security.PermissionCollection;
import java.security.Permissions;
import java.util.List;

/** An installed application, run in this JVM. */
final class Application {
  /** Where an application's native libraries lie, in its version folder. */
  private static final String NATIVE_FOLDER = "native";

  /** Asks no file for its permissions: that takes milliseconds, and the application has all. */
  private static final class Loader extends URLClassLoader {
    private final File folder;

    Loader(File folder, URL[] urls, ClassLoader parent) {
      super(urls, parent);
      this.folder = folder;
    }

    /** Asked before the java.library.path, which the JVM has read before this program runs. */
    @Override
    protected String findLibrary(String name) {
      File library = new File(folder, NATIVE_FOLDER + '/' + System.mapLibraryName(name));
      return library.isFile() ? library.getPath() : null;
    }

    @Override
    protected PermissionCollection getPermissions(CodeSource source) {
      PermissionCollection all = new Permissions();
      all.add(new AllPermission());
      return all;
    }
  }

  private final Method main;

  private Application(Method main) {
    this.main = main;
  }

  /** The one in a version folder; the message of the exception says why it cannot be started. */
  static Application in(File folder, LaunchFile launchFile) throws IOException {
    return new Application(
        mainMethod(launchFile.mainClass, folder, classLoader(folder, launchFile.classPath)));
  }

  /** Runs the main class on this thread; throws what its main method throws. */
  void run(String[] arguments) throws Throwable {
    try {
      main.invoke(null, (Object) arguments);
    } catch (InvocationTargetException e) {
      throw e.getCause();
    }
  }

  /**
   * A class loader that sees the application and the platform, but not the updater. The application
   * finds its class path where it would find it if it had been started alone.
   */
  private static ClassLoader classLoader(File folder, List<String> entries)
      throws MalformedURLException {
    URL[] urls = new URL[entries.size()];
    StringBuilder text = new StringBuilder();
    for (int i = 0; i < urls.length; i++) {
      File entry = new File(folder, entries.get(i));
      urls[i] = entry.toURI().toURL();
      text.append(i == 0 ? "" : File.pathSeparator).append(entry.getPath());
    }
    System.setProperty("java.class.path", text.toString());
    // Never closed: the application may have threads that outlive its main method.
    ClassLoader loader = new Loader(folder, urls, ClassLoader.getSystemClassLoader().getParent());
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
