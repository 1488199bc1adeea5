package io.quillory.updater;

import java.io.File;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;
import java.security.AllPermission;
import java.security.CodeSource;
import java.security.PermissionCollection;
import java.security.Permissions;
import java.util.List;

/**
 * The classes of an application that is not on the class path. Asks no file for its permissions:
 * that takes milliseconds, and the application has all.
 */
final class OwnLoader extends URLClassLoader {
  private final File folder;

  OwnLoader(File folder, List<String> entries) throws MalformedURLException {
    super(urlsOf(folder, entries), ClassLoader.getSystemClassLoader().getParent());
    this.folder = folder;
  }

  private static URL[] urlsOf(File folder, List<String> entries) throws MalformedURLException {
    URL[] urls = new URL[entries.size()];
    for (int i = 0; i < urls.length; i++) {
      urls[i] = new File(folder, entries.get(i)).toURI().toURL();
    }
    return urls;
  }

  /** Asked before the java.library.path, which the JVM has read before this program runs. */
  @Override
  protected String findLibrary(String name) {
    File library =
        new File(folder, LaunchFile.NATIVE_FOLDER + '/' + System.mapLibraryName(name));
    return library.isFile() ? library.getPath() : null;
  }

  @Override
  protected PermissionCollection getPermissions(CodeSource source) {
    PermissionCollection all = new Permissions();
    all.add(new AllPermission());
    return all;
  }
}
