package io.quillory.updater;

import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Iterator;
import java.util.List;

/**
 * Whether the application shows a window, by AWT or JavaFX. Toolkits are known by their threads, so
 * that none is loaded by the question.
 */
final class ShownWindows {
  private static final String AWT_THREAD = "AWT-EventQueue-";
  private static final String FX_THREAD = "JavaFX Application Thread";

  private ShownWindows() {}

  static boolean areThere() {
    ThreadGroup all = Thread.currentThread().getThreadGroup();
    while (all.getParent() != null) {
      all = all.getParent();
    }
    Thread[] threads = new Thread[all.activeCount() * 2 + 16];
    int count = all.enumerate(threads);
    for (int i = 0; i < count; i++) {
      String name = threads[i].getName();
      if (name.startsWith(AWT_THREAD) && isOfAwt()) {
        return true;
      }
      if (name.equals(FX_THREAD) && isOfFx(threads[i].getContextClassLoader())) {
        return true;
      }
    }
    return false;
  }

  private static boolean isOfAwt() {
    try {
      Class<?> type = Class.forName("java.awt.Window");
      Method isShowing = type.getMethod("isShowing");
      for (Object window : (Object[]) type.getMethod("getWindows").invoke(null)) {
        if ((Boolean) isShowing.invoke(window)) {
          return true;
        }
      }
    } catch (ReflectiveOperationException | LinkageError e) {
      // A thread of that name, and no toolkit.
    }
    return false;
  }

  /** From outside of its thread: what is found may be of the moment before. */
  private static boolean isOfFx(ClassLoader loader) {
    try {
      Class<?> type = Class.forName("javafx.stage.Window", false, loader);
      Method isShowing = type.getMethod("isShowing");
      for (Object window : windowsOf(type)) {
        if ((Boolean) isShowing.invoke(window)) {
          return true;
        }
      }
    } catch (ReflectiveOperationException | RuntimeException | LinkageError e) {
      // It changed while it was looked at: the next look comes soon.
    }
    return false;
  }

  private static Object[] windowsOf(Class<?> type) throws ReflectiveOperationException {
    try {
      return ((List<?>) type.getMethod("getWindows").invoke(null)).toArray();
    } catch (NoSuchMethodException e) {
      // Of JavaFX 8: an iterator.
      Iterator<?> windows =
          (Iterator<?>) type.getMethod("impl_getWindows").invoke(null);
      ArrayList<Object> found = new ArrayList<Object>();
      while (windows.hasNext()) {
        found.add(windows.next());
      }
      return found.toArray();
    }
  }
}
