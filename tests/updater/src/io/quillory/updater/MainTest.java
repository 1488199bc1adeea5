package io.quillory.updater;

import static org.hamcrest.CoreMatchers.containsString;
import static org.hamcrest.CoreMatchers.startsWith;
import static org.hamcrest.MatcherAssert.assertThat;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.net.URL;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.jar.JarOutputStream;
import java.util.jar.Manifest;
import java.util.zip.ZipEntry;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

/** The updater in a process of its own, with an application that says what it was given. */
public class MainTest {
  private static final String UPDATER = System.getProperty("test.updater");
  private static final String SAMPLE = System.getProperty("test.sample");

  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private String classPath = UPDATER;
  private File own;
  private File properties;
  private int status;
  private String out;
  private String err;

  @Before
  public void install() throws Exception {
    own = folder.newFolder("Quillory-Quillory-4-complete");
    properties = new File(own, "QYLaunchProperties-1700000020000-5");
    writeLaunchFile(own, "io.quillory.updater.Main", "updater.jar");
    writeProperties("qystat_app_name", "Demo", "qystat_app_dir", own.getPath());
  }

  private static void write(File file, String content) throws IOException {
    FileOutputStream out = new FileOutputStream(file);
    out.write(content.getBytes(StandardCharsets.UTF_8));
    out.close();
  }

  private void writeProperties(String... entries) throws IOException {
    write(properties, String.join("\0", entries));
  }

  private static void writeLaunchFile(
      File folder, String mainClass, String classPath, String... extraArguments)
      throws IOException {
    writeLaunchFile(folder, mainClass, classPath, extraArguments, new String[0]);
  }

  private static void writeLaunchFile(
      File folder, String mainClass, String classPath, String[] extraArguments, String[] options)
      throws IOException {
    StringBuilder text = new StringBuilder("6\0" + mainClass + "\0\0demo\0\0" + "0\0" + "0\0");
    text.append("0\0").append("1\0").append(classPath).append('\0');
    text.append(extraArguments.length).append('\0');
    for (String argument : extraArguments) {
      text.append(argument).append('\0');
    }
    text.append("\0\0\0").append(options.length).append('\0');
    for (String option : options) {
      text.append(option).append('\0');
    }
    write(new File(folder, "QuilloryLaunch"), text.append("0\0").toString());
  }

  private File installDemo(int version, String mainClass, String... extra) throws Exception {
    File demo = folder.newFolder("Quillory-Demo-" + version + "-complete");
    Files.copy(new File(SAMPLE).toPath(), new File(demo, "s p%41ce.jar").toPath());
    writeLaunchFile(demo, mainClass, "s p%41ce.jar", extra);
    return demo;
  }

  private void start(String... arguments) throws Exception {
    startWith(new String[0], arguments);
  }

  private void startWith(String[] jvmOptions, String... arguments) throws Exception {
    List<String> command = new ArrayList<String>();
    command.add(System.getProperty("java.home") + "/bin/java");
    command.addAll(Arrays.asList(jvmOptions));
    command.addAll(Arrays.asList("-cp", classPath, "io.quillory.updater.Main"));
    command.addAll(Arrays.asList(arguments));
    File errFile = folder.newFile();
    Process process =
        new ProcessBuilder(command).directory(folder.getRoot()).redirectError(errFile).start();
    out = contentOf(process.getInputStream());
    status = process.waitFor();
    err = new String(Files.readAllBytes(errFile.toPath()), StandardCharsets.UTF_8);
  }

  private static String contentOf(InputStream in) throws IOException {
    ByteArrayOutputStream content = new ByteArrayOutputStream();
    byte[] buffer = new byte[4096];
    for (int count; (count = in.read(buffer)) > 0; ) {
      content.write(buffer, 0, count);
    }
    return new String(content.toByteArray(), StandardCharsets.UTF_8);
  }

  @Test
  public void theNewestVersionRunsWithItsExtraArgumentsBeforeTheUsers() throws Exception {
    installDemo(9, "sample.Sample", "old");
    File demo = installDemo(12, "sample.Sample", "extra", "");
    start(properties.getPath(), "user", "two words");
    assertEquals(err, 0, status);
    assertEquals(
        "argument " + properties + "\nargument extra\nargument \nargument user\n"
            + "argument two words\nclass path " + demo + "/s p%41ce.jar\n"
            + "context loader is mine: true\nsees the updater: false\n",
        out);
  }

  @Test
  public void anApplicationThatWantsItGetsWhatItWouldGetWithoutALauncher() throws Exception {
    File demo = installDemo(1, "sample.Sample");
    writeLaunchFile(demo, "sample.Sample", "s p%41ce.jar", new String[] {"extra"},
        new String[] {"-Dquillory.arguments=user", "-Dsample.property=given to it"});
    start(properties.getPath(), "user", "--property=quillory.launch.properties",
        "--property=sample.property");
    assertEquals(err, 0, status);
    assertThat(out, startsWith("argument extra\nargument user\nargument --property="));
    assertThat(out, containsString("property " + properties + "\nproperty given to it\n"));
  }

  /** As the launcher starts the updater, with a version behind it on the class path. */
  private void startOn(File version, String... arguments) throws Exception {
    classPath = UPDATER + ":" + version + "/s p%41ce.jar";
    startWith(new String[] {"-Dquillory.application=" + version}, arguments);
  }

  @Test
  public void anApplicationOnTheClassPathHasWhatItWouldHaveWithoutALauncher() throws Exception {
    File demo = installDemo(1, "sample.Sample");
    startOn(demo, properties.getPath(), "--open=sample:path", "--system-loader");
    assertEquals(err, 0, status);
    assertThat(out, containsString("opened of the application: path\n"));
    assertThat(out, containsString("system loader is mine: true\n"));
    assertThat(out, containsString("class path " + demo + "/s p%41ce.jar\n"));
    assertThat(out, containsString("context loader is mine: true\n"));
  }

  /** What the updater's launch file has, as a start in another process needs it. */
  private void installUpdater() throws Exception {
    Files.copy(new File(UPDATER).toPath(), new File(own, "updater.jar").toPath());
  }

  @Test
  public void anotherVersionThanTheOneOnTheClassPathRunsInAProcessOfItsOwn() throws Exception {
    installUpdater();
    File old = installDemo(1, "sample.Missing");
    File demo = installDemo(2, "sample.Sample");
    writeLaunchFile(demo, "sample.Sample", "s p%41ce.jar", new String[] {"extra"},
        new String[] {"-Dquillory.arguments=user", "-Dsample.property=given to it"});
    startOn(old, properties.getPath(), "two words", "--open=sample:path", "--system-loader",
        "--property=sample.property", "--property=quillory.launch.properties");
    assertEquals(err, 0, status);
    assertThat(out, startsWith("argument extra\nargument two words\n"));
    assertThat(out, containsString("class path " + demo + "/s p%41ce.jar\n"));
    assertThat(out, containsString("opened of the application: path\n"));
    assertThat(out, containsString("system loader is mine: true\n"));
    assertThat(out, containsString("property given to it\nproperty " + properties + "\n"));
    startOn(old, properties.getPath(), "--exit=5");
    assertEquals(5, status);
  }

  @Test
  public void anApplicationThatWasNotThereWhenTheJvmBeganRunsInAProcessOfItsOwn()
      throws Exception {
    installUpdater();
    installDemo(1, "sample.Sample");
    startWith(new String[] {"-Dquillory.application="}, properties.getPath(), "--system-loader");
    assertEquals(err, 0, status);
    assertThat(out, containsString("system loader is mine: true\n"));
  }

  @Test
  public void aStartInOrderOrInAnotherProcessSaysNothingAgainstTheArchive() throws Exception {
    installUpdater();
    File demo = installDemo(1, "sample.Sample");
    File tries = new File(folder.getRoot(), "tries");
    for (String known : new String[] {demo.getPath(), ""}) {
      write(tries, ".");
      classPath = UPDATER + ":" + demo + "/s p%41ce.jar";
      startWith(new String[] {"-Dquillory.application=" + known,
          "-Dquillory.archive.tries=" + tries}, properties.getPath());
      assertEquals(err, 0, status);
      assertFalse(tries.exists());
    }
    write(tries, ".");
    startWith(new String[] {"-Dquillory.application=" + demo, "-Dquillory.archive.tries=" + tries},
        properties.getPath(), "--throw");
    assertEquals(1, status);
    assertTrue(tries.exists());
  }

  @Test
  public void theAgentOfTheManifestRunsBeforeTheMainClass() throws Exception {
    File demo = installDemo(1, "sample.Sample");
    writeLaunchFile(demo, "sample.Sample", "s p%41ce.jar", new String[0],
        new String[] {"-Dquillory.agent=s p%41ce.jar"});
    Manifest manifest = new Manifest();
    manifest.getMainAttributes().putValue("Manifest-Version", "1.0");
    manifest.getMainAttributes().putValue("Launcher-Agent-Class", "sample.Agent");
    JarOutputStream jar =
        new JarOutputStream(new FileOutputStream(new File(demo, "s p%41ce.jar")), manifest);
    for (String name : new String[] {"sample/Agent.class", "sample/Sample.class"}) {
      jar.putNextEntry(new ZipEntry(name));
      InputStream in = new URL("jar:" + new File(SAMPLE).toURI() + "!/" + name).openStream();
      byte[] bytes = new byte[1 << 20];
      for (int count; (count = in.read(bytes)) > 0; ) {
        jar.write(bytes, 0, count);
      }
    }
    jar.close();
    classPath = UPDATER + ":" + demo + "/s p%41ce.jar";
    String[] options = {"-Dquillory.application=" + demo,
        "--add-exports=java.instrument/sun.instrument=ALL-UNNAMED"};
    startWith(options, properties.getPath(), "--property=sample.agent");
    assertEquals(err, 0, status);
    assertThat(out, containsString("property has instrumentation: true, main loaded: false\n"));
    startWith(new String[] {options[0]}, properties.getPath());
    assertEquals(1, status);
    assertThat(err, startsWith("[Updater] The agent of " + demo + "/s p%41ce.jar cannot be loaded: "));
  }

  @Test
  public void aModuleOfTheApplicationIsNotOnItsClassPath() throws Exception {
    File demo = installDemo(1, "sample.Sample");
    Files.move(new File(demo, "s p%41ce.jar").toPath(), new File(demo, "sample.jar").toPath());
    writeLaunchFile(demo, "sample.Hidden", "sample.jar", new String[0],
        new String[] {"-Dquillory.module=sample"});
    startWith(new String[] {"-Dquillory.application=" + demo, "--module-path=" + demo
        + "/sample.jar", "--add-modules=sample", "--add-opens=sample/sample=ALL-UNNAMED"},
        properties.getPath());
    assertEquals(err, 0, status);
    assertEquals("hidden\n", out);
    writeLaunchFile(demo, "sample.Sample", "sample.jar", new String[0],
        new String[] {"-Dquillory.module=sample"});
    installUpdater();
    startWith(new String[] {"-Dquillory.application="}, properties.getPath(), "--module");
    assertEquals(err, 0, status);
    assertThat(out, containsString("class path \n"));
    assertThat(out, containsString("module of a name: true\n"));
  }

  @Test
  public void nativeLibrariesAreFoundBesideTheApplication() throws Exception {
    File demo = installDemo(1, "sample.Sample");
    start(properties.getPath(), "--library=quillory_sample");
    assertThat(out, containsString("library no quillory_sample in java.library.path"));
    File library = new File(demo, "native/" + System.mapLibraryName("quillory_sample"));
    library.getParentFile().mkdir();
    write(library, "no library");
    start(properties.getPath(), "--library=quillory_sample");
    assertThat(out, containsString("library " + library + ":"));
  }

  @Test
  public void theUpdatersOwnExtraArgumentsAreNotTheApplications() throws Exception {
    installDemo(1, "sample.Sample", "extra");
    writeLaunchFile(own, "io.quillory.updater.Main", "updater.jar", "mine", "mine too");
    start(properties.getPath(), "mine", "mine too", "user");
    assertThat(out, containsString("argument extra\nargument user\nclass path"));
    start(properties.getPath(), "mine", "user");
    assertThat(out, containsString("argument extra\nargument mine\nargument user\nclass path"));
  }

  @Test
  public void theApplicationRunsOnTheThreadThatWasStarted() throws Exception {
    installDemo(1, "sample.Sample");
    start(properties.getPath(), "--thread");
    assertThat(out, containsString("thread main\n"));
  }

  @Test
  public void anExceptionOfTheApplicationIsItsOwn() throws Exception {
    installDemo(1, "sample.Sample");
    start(properties.getPath(), "--throw");
    assertEquals(1, status);
    assertThat(err, containsString("java.lang.IllegalStateException: thrown on purpose"));
    assertFalse(err, err.contains("InvocationTargetException"));
  }

  @Test
  public void theExitStatusOfTheApplicationIsItsOwn() throws Exception {
    installDemo(1, "sample.Sample");
    start(properties.getPath(), "--exit=5");
    assertEquals(5, status);
  }

  @Test
  public void aMainClassNeedNotBePublic() throws Exception {
    installDemo(1, "sample.Hidden");
    start(properties.getPath());
    assertEquals(err, 0, status);
    assertEquals("hidden\n", out);
  }

  @Test
  public void propertiesOfEarlierStartsAreDeletedAndTheCurrentOnesStay() throws Exception {
    installDemo(1, "sample.Sample");
    File old = new File(own, "QYLaunchProperties-1600000000000-4");
    write(old, "");
    start(properties.getPath());
    assertFalse(old.exists());
    assertTrue(properties.exists());
  }

  private void assertRefused(String message) {
    assertEquals(1, status);
    assertEquals("", out);
    assertEquals("[Updater] " + message + "\n", err);
  }

  @Test
  public void withoutAnInstalledApplicationItSaysSo() throws Exception {
    folder.newFolder("Quillory-Other-3-complete");
    start(properties.getPath());
    assertRefused("No version of \"Demo\" is installed in " + folder.getRoot() + ".");
  }

  @Test
  public void itNeverRunsItself() throws Exception {
    writeProperties("qystat_app_name", "Quillory", "qystat_app_dir", own.getPath());
    start(properties.getPath());
    assertRefused("No version of \"Quillory\" is installed in " + folder.getRoot() + ".");
  }

  @Test
  public void withoutAFirstArgumentItSaysSo() throws Exception {
    start();
    assertRefused("The path of the launch-properties file is missing.");
  }

  @Test
  public void withoutPropertiesItSaysSo() throws Exception {
    File none = new File(folder.getRoot(), "none");
    start(none.getPath());
    assertRefused(
        "Cannot read the launch properties: " + none + " (No such file or directory)");
    writeProperties("qystat_app_name", "Demo");
    start(properties.getPath());
    assertRefused("The launch properties have no qystat_app_dir.");
    writeProperties("qystat_app_dir", own.getPath(), "qystat_app_name", "\u0004");
    start(properties.getPath());
    assertRefused("The launch properties have no qystat_app_name.");
  }

  @Test
  public void withoutALaunchFileItSaysSo() throws Exception {
    File demo = folder.newFolder("Quillory-Demo-1-complete");
    start(properties.getPath());
    assertRefused(
        "Cannot read the launch file: " + demo + "/QuilloryLaunch (No such file or directory)");
  }

  @Test
  public void aMainClassThatCannotBeRunIsNamed() throws Exception {
    File demo = installDemo(1, "sample.Missing");
    start(properties.getPath());
    assertRefused("There is no class \"sample.Missing\" in " + demo + ".");
    writeLaunchFile(demo, "", "s p%41ce.jar");
    start(properties.getPath());
    assertRefused("There is no class \"\" in " + demo + ".");
    writeLaunchFile(demo, "sample.NoMain", "s p%41ce.jar");
    start(properties.getPath());
    assertRefused("The class sample.NoMain has no public main method.");
    writeLaunchFile(demo, "sample.NotStatic", "s p%41ce.jar");
    start(properties.getPath());
    assertRefused("The main method of sample.NotStatic is not \"static void\".");
  }

  @Test
  public void aDamagedClassIsNamed() throws Exception {
    File demo = installDemo(1, "Damaged");
    write(new File(demo, "Damaged.class"), "no class at all");
    writeLaunchFile(demo, "Damaged", "./");
    start(properties.getPath());
    assertEquals(1, status);
    assertThat(
        err,
        containsString("[Updater] The class Damaged cannot be loaded: java.lang.ClassFormatError"));
  }

  /** Those of the updater's classes that a start loads, in their order. */
  private List<String> loadedClasses() throws Exception {
    startWith(new String[] {"-Xlog:class+load:file=" + folder.getRoot() + "/classes"},
        properties.getPath());
    assertEquals(err, 0, status);
    List<String> names = new ArrayList<String>();
    String prefix = "io.quillory.updater.";
    for (String line : Files.readAllLines(new File(folder.getRoot(), "classes").toPath())) {
      int start = line.indexOf(prefix);
      if (start >= 0) {
        names.add(line.substring(start + prefix.length(), line.indexOf(' ', start)));
      }
      assertFalse(line, line.contains("Lambda") && line.contains("quillory"));
    }
    return names;
  }

  @Test
  public void anInstallationWithoutUpdatesIsStartedAsIfThereWereNone() throws Exception {
    installDemo(1, "sample.Sample");
    assertEquals(
        Arrays.asList("Main", "LaunchProperties", "Records", "VersionFolders", "LaunchFile",
            "Application", "OwnLoader"),
        loadedClasses());
    assertFalse(new File(folder.getRoot(), "QYUpdates").exists());
  }

  @Test
  public void aWarmStartWithUpdatesLoadsNoClassMore() throws Exception {
    installDemo(1, "sample.Sample");
    write(new File(own, "QuilloryUpdate"), Installation.SETTINGS);
    File updates = folder.newFolder("QYUpdates");
    write(
        new File(updates, "trials"),
        "1\0" + "1\0Quillory-Demo-1-complete\0\0" + "0\0GOOD\0");
    assertEquals(
        Arrays.asList("Main", "LaunchProperties", "Records", "VersionFolders", "LaunchFile",
            "Application", "OwnLoader"),
        loadedClasses());
  }

  @Test
  public void aVersionThatCannotBeRunLeavesABadStart() throws Exception {
    installDemo(1, "sample.Sample");
    installDemo(2, "sample.Missing");
    write(new File(own, "QuilloryUpdate"), Installation.SETTINGS);
    File first = properties;
    for (int i = 0; i < 2; i++) {
      start(properties.getPath());
      assertRefused("There is no class \"sample.Missing\" in " + folder.getRoot()
          + "/Quillory-Demo-2-complete.");
      File attempt =
          new File(folder.getRoot(), "QYUpdates/try-" + properties.getName().substring(19));
      assertEquals(
          "Quillory-Demo-2-complete\nclosed\n",
          new String(Files.readAllBytes(attempt.toPath()), StandardCharsets.UTF_8));
      // As the launcher does.
      Files.write(attempt.toPath(), "ended 1\n".getBytes(), StandardOpenOption.APPEND);
      properties = new File(own, "QYLaunchProperties-1700000020001-" + i);
      Files.copy(first.toPath(), properties.toPath());
    }
    start(properties.getPath());
    assertEquals(0, status);
    assertEquals(
        "[Updater] Version 2 of \"Demo\" did not start twice and is not tried again. Version 1 is "
            + "started.\n",
        err);
  }

  @Test
  public void aSecondStartOfASingleInstanceHandsOverAndEnds() throws Exception {
    File demo = installDemo(1, "sample.Sample");
    writeLaunchFile(
        demo, "sample.Sample", "s p%41ce.jar", new String[0],
        new String[] {"-Dquillory.arguments=user", "-Dquillory.instance=single"});
    write(new File(own, "QuilloryUpdate"), Installation.SETTINGS);
    File lock = new File(folder.getRoot(), "QYInstance-" + System.getProperty("user.name"));
    File ready = new File(folder.getRoot(), "ready");
    // As the system locks for another JVM.
    Process first =
        new ProcessBuilder(
                "python3", "-B", "-c",
                "import fcntl,sys; f=open(sys.argv[1],'w'); fcntl.lockf(f,fcntl.LOCK_EX);"
                    + "open(sys.argv[2],'w'); sys.stdin.read()",
                lock.getPath(), ready.getPath())
            .start();
    try {
      while (!ready.exists()) {
        assertTrue(first.isAlive());
        Thread.sleep(5);
      }
      start(properties.getPath(), "--new", "s p%41ce");
      assertEquals(err, 0, status);
      assertEquals("its main class has not run", "", out);
      assertEquals(
          "--new\0s p%41ce\0",
          Installation.read(
              new File(folder.getRoot(), "QYInstanceRequests-" + System.getProperty("user.name"))));
      File attempt =
          new File(folder.getRoot(), "QYUpdates/try-" + properties.getName().substring(19));
      assertTrue(Installation.read(attempt).contains("\nneutral\n"));
    } finally {
      first.destroy();
    }
    start(properties.getPath(), "--property=quillory.instance.requests");
    assertTrue(out, out.contains("property " + folder.getRoot() + "/QYInstanceRequests-"));
  }
}
