package io.quillory.updater;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertNull;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

public class LaunchPropertiesTest {
  @Rule public TemporaryFolder folder = new TemporaryFolder();

  private LaunchProperties read(String content) throws IOException {
    File file = folder.newFile();
    FileOutputStream out = new FileOutputStream(file);
    out.write(content.getBytes(StandardCharsets.UTF_8));
    out.close();
    return LaunchProperties.read(file);
  }

  @Test
  public void theLastValueHasNoZeroByte() throws IOException {
    LaunchProperties properties = read("qystat_app_name\0Demo\0qystat_app_dir\0/m/App");
    assertEquals("Demo", properties.get("qystat_app_name"));
    assertEquals("/m/App", properties.get("qystat_app_dir"));
    assertNull(properties.get("qydyna_app_name"));
  }

  @Test
  public void theByteFourAloneIsTheEmptyValue() throws IOException {
    LaunchProperties properties = read("a\0\u0004\0b\0\u0004\u0004");
    assertEquals("", properties.get("a"));
    assertEquals("\u0004\u0004", properties.get("b"));
  }

  @Test
  public void ofARepeatedKeyTheLastValueCounts() throws IOException {
    assertEquals("2", read("a\0" + "1\0b\0x\0a\0" + "2").get("a"));
  }

  @Test
  public void aValueIsNeverTakenForAKey() throws IOException {
    assertEquals("right", read("a\0b\0b\0right\0c\0b").get("b"));
    assertNull(read("x\0a\0y\0z").get("a"));
  }

  @Test
  public void aKeyWithoutAValueIsEmpty() throws IOException {
    assertEquals("", read("a\0x\0b").get("b"));
  }

  @Test
  public void anEmptyFileHasNoProperties() throws IOException {
    assertNull(read("").get(""));
    assertNull(read("").get("a"));
  }

  /** What is left of these files when the last of them is the current one. */
  private String[] leftOf(String... names) throws IOException {
    File own = folder.newFolder();
    for (String name : names) {
      new File(own, name).createNewFile();
    }
    LaunchProperties.deleteEarlierThan(new File(own, names[names.length - 1]));
    String[] left = own.list();
    Arrays.sort(left);
    return left;
  }

  @Test
  public void filesOfEarlierStartsAreDeleted() throws IOException {
    assertArrayEquals(
        new String[] {"QYLaunchProperties-1700000020000-5", "QuilloryLaunch"},
        leftOf(
            "QuilloryLaunch",
            "QYLaunchProperties-1600000000000-3",
            "QYLaunchProperties-1700000009999-4",
            "QYLaunchProperties-0-0",
            "QYLaunchProperties-1700000020000-5"));
  }

  @Test
  public void filesThatMayStillBeReadStay() throws IOException {
    String[] names = {
      "QYLaunchProperties-1700000010000-3",
      "QYLaunchProperties-1700000020000-4",
      "QYLaunchProperties-1700000020001-5",
      "QYLaunchProperties-1700000020000-6"
    };
    String[] left = leftOf(names);
    Arrays.sort(names);
    assertArrayEquals(names, left);
  }

  @Test
  public void otherFilesStay() throws IOException {
    String[] names = {
      "QYLaunchProperties-",
      "QYLaunchProperties-1",
      "QYLaunchProperties-1-",
      "QYLaunchProperties--1",
      "QYLaunchProperties-1-2-3",
      "QYLaunchProperties-1-2.txt",
      "QYLaunchProperties-x1-2",
      "qylaunchproperties-1-2",
      "xQYLaunchProperties-1-2",
      "QYLaunchProperties-1700000020000-5"
    };
    String[] left = leftOf(names);
    Arrays.sort(names);
    assertArrayEquals(names, left);
  }

  @Test
  public void nothingIsDeletedWhenTheCurrentFileHasAnotherName() throws IOException {
    assertArrayEquals(
        new String[] {"QYLaunchProperties-1-1", "properties"},
        leftOf("QYLaunchProperties-1-1", "properties"));
  }
}
