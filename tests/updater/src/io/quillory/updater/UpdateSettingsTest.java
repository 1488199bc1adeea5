package io.quillory.updater;

import static org.junit.Assert.assertEquals;

import java.io.File;
import java.io.IOException;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class UpdateSettingsTest {
  private static final File REAL = Main.administratorsFolder;

  @Rule public TemporaryFolder place = new TemporaryFolder();

  private Installation installation;
  private File administrators;

  @Before
  public void install() throws IOException {
    installation = new Installation(place);
    administrators = place.newFolder("administrator's");
    Main.administratorsFolder = administrators;
  }

  @After
  public void leave() {
    Main.administratorsFolder = REAL;
  }

  private UpdateSettings read() throws IOException {
    return UpdateSettings.of(
        installation.updater, LaunchProperties.read(installation.properties), "Demo");
  }

  private String modeWith(String administratorsFile) throws IOException {
    Installation.write(new File(administrators, "Demo.conf"), administratorsFile);
    return read().mode;
  }

  @Test
  public void theAdministratorsFilesAreThoseOfTheSystem() {
    assertEquals(new File("/etc/quillory"), REAL);
  }

  @Test
  public void theFileSaysWhatHolds() throws IOException {
    installation.settings("1\0stable\0at-start\0" + "7\0" + "48\0");
    assertEquals("at-start", read().mode);
    assertEquals(7, read().atStartSeconds);
    assertEquals(48, read().checkHours);
  }

  @Test
  public void withoutAFileOrWithOneOfAnotherFormatUpdatesAreOff() throws IOException {
    assertEquals("off", read().mode);
    installation.settings("2" + Installation.SETTINGS.substring(1));
    assertEquals("off", read().mode);
    installation.settings("");
    assertEquals("off", read().mode);
  }

  @Test
  public void theBundleOverridesTheFile() throws IOException {
    installation.settings(Installation.SETTINGS);
    Installation.write(installation.properties, "qydyna_update_mode\0manual");
    assertEquals("manual", read().mode);
    Installation.write(installation.properties, "qydyna_update_mode\0\u0004");
    assertEquals("an empty one says nothing", "background", read().mode);
  }

  @Test
  public void theAdministratorOverridesAll() throws IOException {
    installation.settings(Installation.SETTINGS);
    Installation.write(installation.properties, "qydyna_update_mode\0manual");
    assertEquals("off", modeWith("# by the house\nmode = off # for good\nchannel = beta\n"));
    assertEquals("ask", modeWith("mode=off\n  mode =\task"));
    assertEquals("manual", modeWith("# mode = off\npin = 12\nmodes = off\n"));
    assertEquals("manual", modeWith(""));
  }

  @Test
  public void anApplicationsNameLeadsToNoOtherFolder() throws IOException {
    installation.settings(Installation.SETTINGS);
    Installation.write(new File(place.getRoot(), "up.conf"), "mode = off\n");
    LaunchProperties properties = LaunchProperties.read(installation.properties);
    assertEquals(
        "background", UpdateSettings.of(installation.updater, properties, "../up").mode);
  }
}
