package io.quillory.updater;

import static org.junit.Assert.assertEquals;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.Collections;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class LaunchFileTest {
  private static final String HEADER = "6\0com.example.Main\0\0demo\0\0" + "0\0" + "0\0" + "0\0";

  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private LaunchFile read(String content) throws IOException {
    FileOutputStream out = new FileOutputStream(new File(folder.getRoot(), "QuilloryLaunch"));
    out.write(content.getBytes(StandardCharsets.UTF_8));
    out.close();
    return LaunchFile.read(folder.getRoot());
  }

  @Test
  public void saysWhatIsRun() throws IOException {
    LaunchFile file = read(HEADER + "2\0a.jar\0lib/b.jar\0" + "1\0extra\0Compatible\0");
    assertEquals("com.example.Main", file.mainClass);
    assertEquals(Arrays.asList("a.jar", "lib/b.jar"), file.classPath);
    assertEquals(Arrays.asList("extra"), file.extraArguments);
  }

  @Test
  public void countsBelowOneMeanNoEntries() throws IOException {
    LaunchFile file = read(HEADER + "-3\0" + "1\0extra\0");
    assertEquals(Collections.emptyList(), file.classPath);
    assertEquals(Arrays.asList("extra"), file.extraArguments);
  }

  @Test
  public void countsThatPromiseMoreEndAtTheEndOfTheFile() throws IOException {
    LaunchFile file = read(HEADER + "9000000000000000000\0a.jar\0");
    assertEquals(Arrays.asList("a.jar"), file.classPath);
    assertEquals(Collections.emptyList(), file.extraArguments);
  }

  @Test
  public void optionsSetSystemPropertiesAndNothingElse() throws IOException {
    LaunchFile file =
        read(HEADER + "0\0" + "0\0Check\0\0\0" + "5\0-Dtest.a=x=y\0-Xmx5m\0-D=z\0-Dtest.b=\0-Dtest.c\0"
            + "0\0");
    file.setSystemProperties();
    assertEquals("x=y", System.getProperty("test.a"));
    assertEquals("", System.getProperty("test.b"));
    assertEquals(null, System.getProperty("test.c"));
    assertEquals(false, file.passesUsersArgumentsOnly());
  }

  @Test
  public void argumentsAreTheUsersAloneWhereAnOptionSaysSo() throws IOException {
    String options = "1\0-Dquillory.arguments=user\0";
    assertEquals(true, read(HEADER + "0\0" + "0\0\0\0\0" + options).passesUsersArgumentsOnly());
    // Older files have fewer records before them, or none of them.
    String rest = HEADER.substring(1) + "0\0" + "0\0";
    assertEquals(true, read("5" + rest + "\0\0\0" + options).passesUsersArgumentsOnly());
    assertEquals(false, read("4" + rest + "\0\0\0" + options).passesUsersArgumentsOnly());
    assertEquals(false, read(HEADER + "0\0" + "0\0\0\0\0" + "0\0").passesUsersArgumentsOnly());
  }

  @Test
  public void aFileCutAnywhereIsReadAsFarAsItGoes() throws IOException {
    String whole = HEADER + "1\0a.jar\0" + "1\0extra\0";
    for (int length = 0; length < whole.length(); length++) {
      LaunchFile file = read(whole.substring(0, length));
      assertEquals(true, "com.example.Main".startsWith(file.mainClass));
    }
  }
}
