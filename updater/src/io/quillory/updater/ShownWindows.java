package io.quillory.updater;

import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Iterator;
import java.util.List;

/**
 * Whether the application shows a window, by AWT, JavaFX or SWT. Toolkits are known by their threads,
 * so that none is loaded by the question. What another one shows is not known.
 */
final class ShownWindows {
  private static final String AWT_THREAD = "AWT-EventQueue-";
  private static final String FX_THREAD = "JavaFX Application Thread";

  private ShownWindows() {}

  static boolean areThere() {
    for (Thread thread : threads()) {
      String name = thread.getName();
      if (name.startsWith(AWT_THREAD) && isOfAwt()) {
        return true;
      }
      if (name.equals(FX_THREAD) && isOfFx(thread.getContextClassLoader())) {
        return true;
      }
      if (SwtWindows.areOf(thread)) {
        return true;
      }
    }
    return false;
  }

  /** Whether there is a toolkit whose windows are known, or would be. */
  static boolean canBeThere() {
    for (Thread thread : threads()) {
      String name = thread.getName();
      if (name.startsWith(AWT_THREAD) || name.equals(FX_THREAD) || SwtWindows.canBeOf(thread)) {
        return true;
      }
    }
    return false;
  }

  /** All that run. */
  private static List<Thread> threads() {
    ThreadGroup all = Thread.currentThread().getThreadGroup();
    while (all.getParent() != null) {
      all = all.getParent();
    }
    Thread[] threads = new Thread[all.activeCount() * 2 + 16];
    return Arrays.asList(threads).subList(0, all.enumerate(threads));
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
