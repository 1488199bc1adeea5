package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;

import java.io.File;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class OwnProcessTest {
  private static final String RUNTIME = "Quillory-JRE-17-complete";

  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private File remembered;

  @Before
  public void nameTheFile() {
    remembered =
        new File(folder.getRoot(), "QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete");
  }

  private void remember(String runtime, String names) throws Exception {
    OwnProcess.remember(folder.getRoot(), runtime, names);
  }

  @Test
  public void theLauncherIsToldWhatToPassOver() throws Exception {
    remember(RUNTIME + ".plugin", "Quillory-Demo-3-complete/Quillory-Demo-2-complete");
    assertEquals(
        "1\0-Dquillory.passed.over=Quillory-Demo-3-complete/Quillory-Demo-2-complete\0",
        Installation.read(remembered));
    remember(RUNTIME, "Quillory-Demo-4-complete");
    assertEquals(
        "1\0-Dquillory.passed.over=Quillory-Demo-4-complete\0", Installation.read(remembered));
  }

  @Test
  public void optionsOfOthersStay() throws Exception {
    Installation.write(remembered, "2\0-Xss4m\0-Dquillory.passed.over=old\0");
    remember(RUNTIME, "new");
    assertEquals("2\0-Xss4m\0-Dquillory.passed.over=new\0", Installation.read(remembered));
    remember(RUNTIME, null);
    assertEquals("1\0-Xss4m\0", Installation.read(remembered));
  }

  @Test
  public void withoutOptionsThereIsNoFile() throws Exception {
    remember(RUNTIME, null);
    assertFalse(remembered.getParentFile().exists());
    remember(RUNTIME, "one");
    remember(RUNTIME, null);
    assertFalse(remembered.exists());
  }
}
