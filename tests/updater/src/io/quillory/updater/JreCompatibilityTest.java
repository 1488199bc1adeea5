package io.quillory.updater;

import static org.junit.Assert.assertEquals;

import org.junit.Test;

public class JreCompatibilityTest {
  @Test
  public void itsExitStatusSaysThatTheRuntimeWillDo() throws Exception {
    Process process =
        new ProcessBuilder(
                System.getProperty("java.home") + "/bin/java",
                "-cp",
                System.getProperty("test.updater"),
                "io.quillory.updater.JreCompatibility",
                "any")
            .start();
    assertEquals(72, process.waitFor());
  }
}
