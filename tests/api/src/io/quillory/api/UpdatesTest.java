package io.quillory.api;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;

import io.quillory.api.UpdateState.Phase;
import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.List;
import java.util.Properties;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.TimeUnit;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

/** With a shell script for quillory-update, which writes its arguments to the file "said". */
public class UpdatesTest {
  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private final Properties before = (Properties) System.getProperties().clone();
  private final LinkedBlockingQueue<UpdateState> heard = new LinkedBlockingQueue<UpdateState>();
  private File master;
  private File updates;
  private File program;
  private File attempt;

  @Before
  public void start() throws IOException {
    master = folder.getRoot();
    updates = folder.newFolder("QYUpdates");
    program = new File(master, "quillory-update");
    attempt = new File(updates, "try-1-1");
    File properties = new File(master, "QYLaunchProperties-1-1");
    write(properties, "qystat_launched_from_dynprops\0/bin/the launcher");
    System.setProperty("quillory.launch.properties", properties.getPath());
    System.setProperty("quillory.update.folder", updates.getPath());
    System.setProperty("quillory.update.program", program.getPath());
    System.setProperty("quillory.update.mode", "ask");
    System.setProperty("quillory.version.folder", version("9").getPath());
    System.setProperty("quillory.try.file", attempt.getPath());
    script("");
    Launch.forget();
  }

  @After
  public void leave() {
    System.setProperties(before);
    Launch.forget();
  }

  private static void write(File file, String content) throws IOException {
    Files.write(file.toPath(), content.getBytes(StandardCharsets.UTF_8));
  }

  private static String read(File file) throws IOException {
    return new String(Files.readAllBytes(file.toPath()), StandardCharsets.UTF_8);
  }

  private File version(String version) {
    File made = new File(master, "Quillory-Demo-" + version + "-complete");
    made.mkdir();
    return made;
  }

  private void script(String rest) throws IOException {
    write(program, "#!/bin/sh\necho \"$@\" > '" + master + "/said'\n" + rest + "\n");
    program.setExecutable(true);
  }

  private String said() throws IOException {
    return read(new File(master, "said")).trim();
  }

  private void state(String phase, String reason) throws IOException {
    write(
        new File(updates, "state"),
        "1\0" + "7\0draw\0" + "0\0" + "90\0etag\0" + "0\0" + phase + '\0' + reason
            + "\0" + "7\0" + "12\0" + "1.2\0" + "360000\0" + "0\0notes\0");
  }

  /** Hears everything, until the phase that comes last. */
  private List<String> heardUntil(Phase last) throws InterruptedException {
    List<String> all = new ArrayList<String>();
    while (true) {
      UpdateState state = heard.poll(20, TimeUnit.SECONDS);
      assertTrue("heard only " + all, state != null);
      all.add(state.toString());
      if (state.phase() == last) {
        return all;
      }
    }
  }

  private String end() {
    return " --properties " + master + "/QYLaunchProperties-1-1 --own-folder " + master;
  }

  @Test
  public void outsideOfTheLauncherEveryCallDoesNothing() throws IOException {
    System.setProperties(before);
    Launch.forget();
    Updates none = new Updates();
    none.check();
    none.download();
    none.cancel();
    none.skip();
    none.remindLater();
    none.remindLater(3);
    none.setChannel("beta");
    none.addListener(heard::add);
    none.markHealthy();
    assertFalse(none.restartToUpdate(() -> true));
    assertEquals(UpdateState.NOTHING, none.state());
    assertNull(none.release());
    assertNull(none.justUpdatedFrom());
    assertNull(none.wentBackFrom());
    assertEquals(0, heard.size());
    assertEquals(Updates.get(), Updates.get());
  }

  @Test
  public void whatTheProgramHasLeftIsTheState() throws IOException {
    Updates now = new Updates();
    assertEquals(Phase.NONE, now.state().phase());
    state("AVAILABLE", "");
    assertEquals(Phase.AVAILABLE, now.state().phase());
    assertEquals("1.2", now.release().shownVersion());
    state("FAILED", "no line");
    assertEquals("no line", now.state().reason());
  }

  @Test
  public void switchedOffIsOff() throws IOException {
    System.setProperty("quillory.update.mode", "off");
    assertEquals(Phase.OFF, new Updates().state().phase());
  }

  @Test
  public void aNewerVersionInItsPlaceIsReady() throws IOException {
    state("AVAILABLE", "");
    Updates now = new Updates();
    assertEquals("360000", "" + now.release().size());
    version("8");
    assertEquals(Phase.AVAILABLE, now.state().phase());
    version("12");
    write(new File(updates, "state"), "1\0"); // As it is after an installation: nothing is offered.
    assertEquals(Phase.STAGED, now.state().phase());
    assertEquals("12", now.release().version());
    assertEquals("it knows how that was called", "1.2", now.release().shownVersion());
    assertEquals("12", new Updates().release().shownVersion());
  }

  @Test
  public void aVersionThatWasPassedOverIsNotReady() throws IOException {
    version("12");
    version("13");
    System.setProperty(
        "quillory.passed.over", "Quillory-Demo-13-complete/Quillory-Demo-12-complete");
    assertEquals(Phase.NONE, new Updates().state().phase());
    version("14");
    assertEquals("14", new Updates().release().version());
  }

  @Test
  public void aDownloadIsHeardOfByteByByte() throws Exception {
    script(
        "echo phase name=CHECKING\necho offer release=7 version=12\necho phase name=DOWNLOADING\n"
            + "echo progress done=100 total=300 rate=1 rest=2\necho something=else\n"
            + "mkdir '" + master + "/Quillory-Demo-12-complete'\necho done version=12 release=7");
    Updates now = new Updates();
    now.addListener(heard::add);
    now.download();
    List<String> all = heardUntil(Phase.STAGED);
    assertEquals("[CHECKING, DOWNLOADING 0/0, DOWNLOADING 100/300, STAGED]", all.toString());
    assertEquals("install" + end(), said());
  }

  @Test
  public void aCheckEndsWithWhatTheProgramHasLeft() throws Exception {
    state("FAILED", "no line");
    script("exit 1");
    Updates now = new Updates();
    now.addListener(heard::add);
    now.check();
    assertEquals("[CHECKING, FAILED]", heardUntil(Phase.FAILED).toString());
    assertEquals("check" + end(), said());
  }

  @Test
  public void aProgramThatIsGoneEndsNothing() throws Exception {
    program.delete();
    Updates now = new Updates();
    now.addListener(heard::add);
    now.check();
    assertEquals("[CHECKING, NONE]", heardUntil(Phase.NONE).toString());
  }

  @Test
  public void aDownloadCanBeCancelled() throws Exception {
    script(
        "trap 'touch \"" + master + "/cancelled\"; exit 1' TERM\necho progress done=1 total=2\n"
            + "while :; do sleep 0.05; done");
    Updates now = new Updates();
    now.addListener(heard::add);
    now.download();
    heardUntil(Phase.DOWNLOADING);
    now.cancel();
    heardUntil(Phase.NONE);
    assertTrue(new File(master, "cancelled").exists());
  }

  @Test
  public void whatTheUserDecidesIsPassedOn() throws Exception {
    state("AVAILABLE", "");
    Updates now = new Updates();
    now.addListener(heard::add);
    now.skip();
    heardUntil(Phase.AVAILABLE);
    assertEquals("skip 12" + end(), said());
    now.remindLater();
    heardUntil(Phase.AVAILABLE);
    assertEquals("remind-later" + end(), said());
    now.remindLater(3);
    heardUntil(Phase.AVAILABLE);
    assertEquals("remind-later 3" + end(), said());
    now.setChannel("beta");
    heardUntil(Phase.AVAILABLE);
    assertEquals("set-channel beta" + end(), said());
  }

  @Test
  public void whatOthersChangeIsHeardOf() throws Exception {
    Updates now = new Updates();
    UpdateListener gone = state -> heard.add(UpdateState.NOTHING);
    now.addListener(gone);
    now.addListener(state -> { throw new IllegalStateException("a listener's own matter"); });
    now.addListener(heard::add);
    now.removeListener(gone);
    version("12");
    assertEquals("[STAGED]", heardUntil(Phase.STAGED).toString());
  }

  @Test
  public void healthIsNotedWhereAStartIsOnTrial() throws IOException {
    new Updates().markHealthy();
    assertFalse(attempt.exists());
    write(attempt, "Quillory-Demo-9-complete\n");
    new Updates().markHealthy();
    assertEquals("Quillory-Demo-9-complete\nhealthy\n", read(attempt));
  }

  @Test
  public void withNothingReadyThereIsNoRestart() throws IOException {
    assertFalse(new Updates().restartToUpdate(() -> true));
    assertFalse(new File(master, "said").exists());
  }

  @Test
  public void theUserCanSayNotNow() throws IOException {
    version("12");
    write(attempt, "");
    assertFalse(new Updates().restartToUpdate(() -> false));
    assertFalse(new File(master, "said").exists());
    assertEquals("", read(attempt));
  }

  @Test
  public void aRestartEndsThisProcessAndWaitsForItsEnd() throws Exception {
    version("12");
    write(attempt, "Quillory-Demo-9-complete\n");
    List<String> command = new ArrayList<String>();
    command.add(System.getProperty("java.home") + "/bin/java");
    for (String name : System.getProperties().stringPropertyNames()) {
      if (name.startsWith("quillory.")) {
        command.add("-D" + name + "=" + System.getProperty(name));
      }
    }
    command.add("-cp");
    command.add(System.getProperty("java.class.path"));
    command.add(UpdatesTest.class.getName());
    Process process = new ProcessBuilder(command).start();
    String pid = firstLineOf(process.getInputStream());
    assertEquals(0, process.waitFor());
    assertEquals("Quillory-Demo-9-complete\nneutral\n", read(attempt));
    File said = new File(master, "said");
    for (int i = 0; i < 1000 && said.length() == 0; i++) {
      Thread.sleep(10);
    }
    assertEquals("restart --wait " + pid + " -- /bin/the launcher", said());
  }

  private static String firstLineOf(InputStream in) throws IOException {
    ByteArrayOutputStream line = new ByteArrayOutputStream();
    for (int c; (c = in.read()) > 0 && c != '\n'; ) {
      line.write(c);
    }
    return line.toString();
  }

  /** An application that restarts; its process is not to outlive that. */
  public static void main(String[] arguments) throws Exception {
    System.out.println(new File("/proc/self").getCanonicalFile().getName());
    new Updates().restartToUpdate(() -> true);
    System.exit(7);
  }
}
