package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import org.eclipse.swt.widgets.Display;
import org.eclipse.swt.widgets.Shell;
import org.junit.After;
import org.junit.Before;
import org.junit.Test;

/** By a toolkit that is strict in what the real one is strict in: who asks on which thread. */
public class SwtWindowsTest {
  private final Shell shell = new Shell();
  private Display display;
  private Thread thread;

  @Before
  public void begin() throws InterruptedException {
    final CountDownLatch isReady = new CountDownLatch(1);
    thread =
        new Thread() {
          @Override
          public void run() {
            display = new Display(shell);
            isReady.countDown();
            display.runEventLoop();
          }
        };
    thread.start();
    isReady.await();
  }

  @After
  public void end() throws InterruptedException {
    display.dispose();
    thread.join();
  }

  /** Looks until there is a window, and as often as may be. */
  private boolean isSeen() throws InterruptedException {
    for (int i = 0; i < 50; i++) {
      if (SwtWindows.areOf(thread)) {
        return true;
      }
      display.awaitRest();
    }
    return false;
  }

  @Test
  public void aWindowThatIsShownIsSeen() throws InterruptedException {
    assertFalse(isSeen());
    shell.isVisible = true;
    assertTrue(isSeen());
    assertEquals("", display.complaint);
  }

  @Test
  public void itIsKnownByTheThreadThatRunsIt() throws InterruptedException {
    shell.isVisible = true;
    display.awaitRest();
    assertTrue(SwtWindows.canBeOf(thread));
    assertFalse(SwtWindows.canBeOf(Thread.currentThread()));
    assertFalse(SwtWindows.areOf(Thread.currentThread()));
  }

  @Test
  public void aThreadThatIsBusyIsAskedOnce() throws InterruptedException {
    CountDownLatch isBusy = new CountDownLatch(1);
    CountDownLatch goOn = new CountDownLatch(1);
    display.asyncExec(
        new Runnable() {
          @Override
          public void run() {
            isBusy.countDown();
            try {
              goOn.await(20, TimeUnit.SECONDS);
            } catch (InterruptedException e) {
              throw new IllegalStateException(e);
            }
          }
        });
    isBusy.await();
    for (int i = 0; i < 10; i++) {
      assertFalse(SwtWindows.areOf(thread));
    }
    assertEquals(1, display.waiting());
    goOn.countDown();
    shell.isVisible = true;
    assertTrue(isSeen());
  }

  @Test
  public void aDisplayThatHasGoneIsNotWaitedFor() throws InterruptedException {
    shell.isVisible = true;
    display.awaitRest();
    display.stopAnswering();
    assertFalse(SwtWindows.areOf(thread));
    assertEquals("asked, and not answered", 1, display.waiting());
    display.isDisposed = true;
    assertFalse(SwtWindows.areOf(thread));
    end();
    begin();
    assertTrue(isSeen());
  }
}
