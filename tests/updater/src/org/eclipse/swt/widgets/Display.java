package org.eclipse.swt.widgets;

import java.util.concurrent.LinkedBlockingQueue;

/** A stand-in for the toolkit's connection to a screen, which one thread alone may ask. */
public class Display {
  private static volatile Display only;

  public volatile String complaint = "";
  public volatile boolean isDisposed;
  private final Thread thread = Thread.currentThread();
  private final Shell shell;
  private final LinkedBlockingQueue<Runnable> waiting = new LinkedBlockingQueue<Runnable>();
  private final LinkedBlockingQueue<Runnable> unanswered = new LinkedBlockingQueue<Runnable>();
  private volatile boolean isAnswering = true;
  private volatile boolean hasEnded;

  public Display(Shell shell) {
    this.shell = shell;
    only = this;
  }

  public static Display findDisplay(Thread thread) {
    return only != null && only.thread == thread ? only : null;
  }

  public void asyncExec(Runnable runnable) {
    if (isDisposed) {
      throw new IllegalStateException("Device is disposed");
    }
    (isAnswering ? waiting : unanswered).add(runnable);
  }

  public void stopAnswering() {
    isAnswering = false;
  }

  public boolean isDisposed() {
    return isDisposed;
  }

  public Shell[] getShells() {
    if (Thread.currentThread() != thread) {
      complaint = "Invalid thread access";
      throw new IllegalStateException(complaint);
    }
    return new Shell[] {shell};
  }

  public int waiting() {
    return waiting.size() + unanswered.size();
  }

  /** The event loop. */
  public void runEventLoop() {
    while (!hasEnded) {
      try {
        waiting.take().run();
      } catch (InterruptedException e) {
        return;
      }
    }
  }

  public void dispose() {
    waiting.add(
        new Runnable() {
          @Override
          public void run() {
            hasEnded = true;
          }
        });
  }

  /** Waits until the event loop does: all that was asked has been answered. */
  public void awaitRest() throws InterruptedException {
    while (!waiting.isEmpty() || thread.getState() != Thread.State.WAITING) {
      Thread.yield();
    }
  }
}
