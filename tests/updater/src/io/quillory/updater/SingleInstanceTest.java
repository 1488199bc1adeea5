package io.quillory.updater;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.util.Properties;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class SingleInstanceTest {
  @Rule public TemporaryFolder place = new TemporaryFolder();

  private final Properties before = (Properties) System.getProperties().clone();
  private File folder;
  private File own;

  @Before
  public void begin() throws IOException {
    System.setProperty("user.name", "me");
    folder = place.getRoot();
    own = place.newFile("QYLaunchProperties-1-1");
  }

  @After
  public void leave() throws IOException {
    if (SingleInstance.held != null) {
      SingleInstance.held.close();
      SingleInstance.held = null;
    }
    System.setProperties(before);
  }

  private boolean isHandedOver(String... requests) {
    return SingleInstance.isHandedOver(folder, own, requests);
  }

  private String handed() throws IOException {
    return Installation.read(new File(folder, "QYInstanceRequests-me"));
  }

  @Test
  public void theFirstStartIsTheInstanceAndGetsWhatLaterOnesAreAskedFor() throws Exception {
    assertFalse(isHandedOver("own"));
    assertEquals(
        folder + "/QYInstanceRequests-me", System.getProperty("quillory.instance.requests"));
    assertEquals("", handed());
    assertTrue(isHandedOver("a b", "demo://\u00fc"));
    assertTrue(isHandedOver());
    assertTrue(isHandedOver("c"));
    assertEquals("a b\0demo://\u00fc\0c\0", handed());
  }

  @Test
  public void anInstanceThatHasEndedIsNone() throws Exception {
    assertFalse(isHandedOver());
    assertTrue(isHandedOver("lost with it"));
    SingleInstance.held.close(); // As the system does, however a process ends.
    assertFalse(isHandedOver("own"));
    assertEquals("nothing of the one before", "", handed());
  }

  @Test
  public void aStartOutlivesAnInstanceThatIsAboutToEnd() throws Exception {
    assertFalse(isHandedOver());
    final java.io.RandomAccessFile first = SingleInstance.held;
    Thread end =
        new Thread() {
          @Override
          public void run() {
            try {
              while (handed().isEmpty()) {
                Thread.sleep(5);
              }
              first.close();
            } catch (IOException | InterruptedException e) {
              throw new IllegalStateException(e);
            }
          }
        };
    end.start();
    assertFalse("it runs itself", isHandedOver("own"));
    end.join();
  }

  @Test
  public void whatSomebodyElseHasPutThereIsNoInstance() throws Exception {
    Files.createSymbolicLink(
        folder.toPath().resolve("QYInstanceRequests-me"), place.newFile("other").toPath());
    assertFalse(isHandedOver());
    assertFalse("without a lock of its own", isHandedOver("a"));
    assertEquals("", Installation.read(new File(folder, "other")));
    assertEquals(null, System.getProperty("quillory.instance.requests"));
  }

  @Test
  public void eachUserHasAnInstance() throws Exception {
    assertFalse(isHandedOver());
    SingleInstance.held.close();
    System.setProperty("user.name", "a/b");
    assertFalse(isHandedOver());
    assertTrue(new File(folder, "QYInstance-a_b").isFile());
  }

  @Test
  public void filesAreHandedOverAsUrlsAndAllElseAsItIs() throws Exception {
    File document = place.newFile("my letter");
    Installation.write(own, "qydyna_url_req\0demo://x\0");
    assertArrayEquals(
        new String[] {"demo://x", document.toURI().toString(), "--new", "demo://y"},
        SingleInstance.requestsOf(
            LaunchProperties.read(own),
            new String[] {"properties", "own", document.getPath(), "--new", "demo://y"}, 2));
  }
}
