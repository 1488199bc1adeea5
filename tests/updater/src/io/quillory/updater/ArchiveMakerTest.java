package io.quillory.updater;

import static org.hamcrest.CoreMatchers.containsString;
import static org.hamcrest.MatcherAssert.assertThat;
import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import java.io.File;
import java.io.InputStream;
import java.nio.file.Files;
import java.util.Arrays;
import java.util.Scanner;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

/** With the Java of these tests, and a version folder whose name has a blank and a percent sign. */
public class ArchiveMakerTest {
  private static final boolean LINKS_AHEAD =
      Records.numberAtStartOf(System.getProperty("java.specification.version")) >= 24;

  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private File master;
  private File apps;
  private File version;
  private File jar;
  private File base;

  @Before
  public void install() throws Exception {
    master = folder.newFolder("of all");
    apps = new File(master, "QYApps");
    version = new File(master, "Quillory-A 1%-1-complete");
    jar = new File(version, "lib/sample.jar");
    assertTrue(apps.mkdir() && jar.getParentFile().mkdirs());
    Files.copy(new File(System.getProperty("test.sample")).toPath(), jar.toPath());
    base = new File(apps, "StartupArchive-" + version.getName());
  }

  private void make(String classes) throws Exception {
    make(classes, false);
  }

  private void make(String classes, boolean mayLink) throws Exception {
    Installation.write(new File(base + ".classes"), classes);
    new ArchiveMaker(base, "fingerprint", classPath(), master, mayLink).make();
  }

  private String classPath() {
    return System.getProperty("test.updater") + File.pathSeparator + jar;
  }

  private String loadsOf(String className) throws Exception {
    Process java =
        new ProcessBuilder(
                System.getProperty("java.home") + "/bin/java", "-Xlog:class+load" + (LINKS_AHEAD ? ",aot" : ""), "-cp",
                classPath(), "-XX:SharedArchiveFile=" + base + ".jsa", className)
            .redirectErrorStream(true)
            .start();
    InputStream out = java.getInputStream();
    String text = new Scanner(out, "UTF-8").useDelimiter("\\A").next();
    java.waitFor();
    return text;
  }

  @Test
  public void anArchiveHasTheClassesOfTheApplicationAndIsTold() throws Exception {
    make("java/lang/Object\nsample/Hidden\nno/such/Class\n@lambda-pro");
    File archive = new File(base + ".jsa");
    assertEquals(
        "1\0fingerprint\0" + archive.length() + "\0" + archive.lastModified() / 1000 + "\0",
        Installation.read(new File(base + ".guard")));
    assertThat(loadsOf("sample.Hidden"), containsString("sample.Hidden source: shared objects"));
    String[] left = apps.list();
    Arrays.sort(left);
    assertArrayEquals(new String[] {base.getName() + ".guard", archive.getName()}, left);
    // Nor is anything left of how the JVM was helped to find the classes.
    String[] folders = master.list();
    Arrays.sort(folders);
    assertArrayEquals(new String[] {"QYApps", version.getName()}, folders);
  }

  /** A Java before 24 does not know how, and makes what it has always made. */
  @Test
  public void anArchiveOfLinkedClassesIsOneThatIsUsed() throws Exception {
    make("java/lang/Object\nsample/Hidden\n", true);
    File archive = new File(base + ".jsa");
    assertThat(
        Installation.read(new File(base + ".guard")),
        containsString("1\0fingerprint\0" + archive.length() + "\0"));
    String loads = loadsOf("sample.Hidden");
    assertThat(loads, containsString("sample.Hidden source: shared objects"));
    if (LINKS_AHEAD) {
      assertThat(loads, containsString("Using AOT-linked classes: true"));
    }
  }

  @Test
  public void whereNoneCanBeMadeItIsToldOnce() throws Exception {
    Files.delete(jar.toPath());
    Installation.write(jar, "no jar");
    make("java/lang/Object\n@lambda-proxy nonsense\n");
    // Whatever this JVM says of such input, there is an archive and its length, or neither.
    File archive = new File(base + ".jsa");
    assertThat(
        Installation.read(new File(base + ".guard")),
        containsString("1\0fingerprint\0" + archive.length() + "\0"));
    assertFalse(new File(base + ".classes").exists());
  }

  @Test
  public void whatIsLeftOfOthersGoes() throws Exception {
    File gone = new File(apps, "StartupArchive-Quillory-A-0-complete.jsa");
    File running = new File(apps, "StartupArchive-Quillory-A-0-complete-1.new");
    File killed = new File(apps, "StartupArchive-Quillory-A-0-complete-2.new");
    File other = new File(apps, "JRE-LastSuccessfulOptions-Quillory-JRE-17-complete");
    for (File file : new File[] {gone, running, killed, other}) {
      Installation.write(file, "x");
    }
    assertTrue(killed.setLastModified(System.currentTimeMillis() - 2 * 3_600_000));
    make("java/lang/Object\n");
    assertFalse(gone.exists());
    assertTrue(running.exists());
    assertFalse(killed.exists());
    assertTrue(other.exists());
  }
}
