package io.quillory.updater;

import java.lang.reflect.Method;

/**
 * Whether a thread shows a window by SWT, which has neither threads nor a list of windows of its
 * own: the thread that runs its event loop is known by what it does at the moment, and only that
 * thread may be asked, so it answers by and by.
 */
final class SwtWindows implements Runnable {
  private static final String DISPLAY = "org.eclipse.swt.widgets.Display";

  /** One question at a time: a thread that is busy answers all of them at once later. */
  private static SwtWindows asked;

  private final Object display;
  private volatile boolean hasAnswered;
  private volatile boolean isShown;

  private SwtWindows(Object display) {
    this.display = display;
  }

  /** Whether the thread is in the toolkit now. */
  static boolean canBeOf(Thread thread) {
    for (StackTraceElement frame : thread.getStackTrace()) {
      if (frame.getClassName().equals(DISPLAY)) {
        return true;
      }
    }
    return false;
  }

  /** What the last question came to; asks the next one where the thread is in the toolkit now. */
  static boolean areOf(Thread thread) {
    SwtWindows earlier = asked;
    if (earlier != null && (earlier.hasAnswered || earlier.isGone())) {
      asked = null;
      if (earlier.isShown) {
        return true;
      }
    }
    if (asked == null && canBeOf(thread)) {
      ask(thread);
    }
    return false;
  }

  private static void ask(Thread thread) {
    try {
      ClassLoader loader = thread.getContextClassLoader();
      Class<?> type = Class.forName(DISPLAY, false, loader);
      Object display = type.getMethod("findDisplay", Thread.class).invoke(null, thread);
      if (display != null) {
        SwtWindows question = new SwtWindows(display);
        type.getMethod("asyncExec", Runnable.class).invoke(display, question);
        asked = question;
      }
    } catch (ReflectiveOperationException | LinkageError e) {
      // Another class of that name, or a display that has just gone.
    }
  }

  /** Whether nobody is left who would answer. */
  private boolean isGone() {
    try {
      return (Boolean) display.getClass().getMethod("isDisposed").invoke(display);
    } catch (ReflectiveOperationException e) {
      return true;
    }
  }

  /** On the thread of the display. */
  @Override
  public void run() {
    try {
      for (Object shell : (Object[]) display.getClass().getMethod("getShells").invoke(display)) {
        Method isVisible = shell.getClass().getMethod("isVisible");
        isShown |= (Boolean) isVisible.invoke(shell);
      }
    } catch (ReflectiveOperationException | RuntimeException e) {
      // It is going: there will be other looks.
    }
    hasAnswered = true;
  }
}
