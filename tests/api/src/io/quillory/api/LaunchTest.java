package io.quillory.api;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;

import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.StandardOpenOption;
import java.util.Arrays;
import java.util.Collections;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.TimeUnit;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class LaunchTest {
  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private File properties;
  private File requests;

  @Before
  public void launch() throws IOException {
    properties = new File(folder.getRoot(), "QYLaunchProperties-1700000020000-5");
    requests = new File(folder.getRoot(), "QYOpenRequests-1700000020000-5");
    System.setProperty("quillory.launch.properties", properties.getPath());
    Launch.forget();
  }

  @After
  public void leave() {
    System.clearProperty("quillory.launch.properties");
    Launch.forget();
  }

  private static void write(File file, String content) throws IOException {
    Files.write(file.toPath(), content.getBytes(StandardCharsets.UTF_8));
  }

  private void request(String url) throws IOException {
    Files.write(
        requests.toPath(), (url + '\0').getBytes(StandardCharsets.UTF_8), StandardOpenOption.APPEND);
  }

  @Test
  public void ofAKeyTheLastValueCountsAndOfANameTheUsers() throws IOException {
    write(properties, "qystat_a\0" + "1\0qydyna_a\0" + "2\0qystat_b\0x\0qystat_b\0\u0004\0qystat_c");
    assertTrue(Launch.isByLauncher());
    assertEquals("1", Launch.properties().get("qystat_a"));
    assertEquals("2", Launch.property("a"));
    assertEquals("", Launch.property("b"));
    assertEquals("", Launch.property("c"));
    assertNull(Launch.property("d"));
  }

  @Test(expected = UnsupportedOperationException.class)
  public void propertiesCannotBeChanged() throws IOException {
    write(properties, "qystat_a\0" + "1");
    Launch.properties().clear();
  }

  @Test
  public void whatALaterStartHasClearedAwayIsReadFromItsOwn() throws IOException {
    write(new File(folder.getRoot(), "QYLaunchProperties-1700000040000-5"), "qystat_a\0new");
    write(new File(folder.getRoot(), "QYLaunchProperties-1700000030000-5"), "qystat_a\0old");
    assertEquals("new", Launch.property("a"));
  }

  @Test
  public void outsideOfTheLauncherThereIsNothing() throws IOException {
    System.clearProperty("quillory.launch.properties");
    assertFalse(Launch.isByLauncher());
    assertEquals(Collections.emptyMap(), Launch.properties());
    assertEquals(Collections.emptyList(), Launch.openRequests());
    Launch.openRequests(url -> {});
    System.setProperty("quillory.launch.properties", folder.getRoot() + "/none/QYLaunch");
    Launch.forget();
    assertEquals(Collections.emptyMap(), Launch.properties());
    assertEquals(Collections.emptyList(), Launch.openRequests());
  }

  @Test
  public void requestsComeOnceAndInOrder() throws IOException {
    write(properties, "qydyna_url_req\0demo://start");
    assertFalse(requests.exists());
    assertEquals(Arrays.asList("demo://start"), Launch.openRequests());
    assertEquals(Collections.emptyList(), Launch.openRequests());
    request("demo://a b");
    request("demo://\u00fc");
    assertEquals(Arrays.asList("demo://a b", "demo://\u00fc"), Launch.openRequests());
    Files.write(requests.toPath(), "demo://ha".getBytes(), StandardOpenOption.APPEND);
    assertEquals(Collections.emptyList(), Launch.openRequests());
    request("lf");
    assertEquals(Arrays.asList("demo://half"), Launch.openRequests());
  }

  @Test
  public void whatLaterStartsHandOverComesToo() throws IOException {
    write(properties, "qystat_a\0" + "1");
    File handed = folder.newFile();
    System.setProperty("quillory.instance.requests", handed.getPath());
    try {
      assertEquals(Collections.emptyList(), Launch.openRequests());
      write(handed, "file:/a\0--new\0");
      request("demo://x");
      assertEquals(Arrays.asList("demo://x", "file:/a", "--new"), Launch.openRequests());
      assertEquals(Collections.emptyList(), Launch.openRequests());
    } finally {
      System.clearProperty("quillory.instance.requests");
    }
  }

  @Test
  public void aListenerIsToldOfEach() throws Exception {
    write(properties, "qystat_a\0" + "1");
    LinkedBlockingQueue<String> heard = new LinkedBlockingQueue<String>();
    Launch.openRequests(); // The file is there.
    Launch.openRequests(heard::add);
    request("demo://a");
    assertEquals("demo://a", heard.poll(20, TimeUnit.SECONDS));
  }
}
