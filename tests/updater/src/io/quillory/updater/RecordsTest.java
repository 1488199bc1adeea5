package io.quillory.updater;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import java.nio.charset.StandardCharsets;
import org.junit.Test;

public class RecordsTest {
  static Records of(String bytes) {
    return new Records(bytes.getBytes(StandardCharsets.UTF_8));
  }

  @Test
  public void valuesEndAtZeroBytes() {
    Records records = of("abc\0\0x y\n\0");
    assertEquals("abc", records.next());
    assertEquals("", records.next());
    assertFalse(records.isAtEnd());
    assertEquals("x y\n", records.next());
    assertTrue(records.isAtEnd());
  }

  @Test
  public void theLastValueMayLackItsZeroByte() {
    Records records = of("a\0tail");
    records.next();
    assertEquals("tail", records.next());
    assertTrue(records.isAtEnd());
  }

  @Test
  public void behindTheEndValuesAreEmpty() {
    Records records = of("");
    assertTrue(records.isAtEnd());
    assertEquals("", records.next());
    assertEquals(0, records.nextNumber());
  }

  @Test
  public void textsAreUtf8() {
    assertEquals("\u00fc\u20ac\ud83d\ude00", of("\u00fc\u20ac\ud83d\ude00\0").next());
  }

  @Test
  public void numbersAreReadAsFarAsTheyGo() {
    String[] texts = {"0", "12", "12abc", "abc", "", "-5", "+7", " \t\n8", "- 1", "--1", "007"};
    long[] numbers = {0, 12, 12, 0, 0, -5, 7, 8, 0, 0, 7};
    for (int i = 0; i < texts.length; i++) {
      assertEquals(texts[i], numbers[i], Records.numberAtStartOf(texts[i]));
    }
  }

  @Test
  public void numbersStopAtTheLimits() {
    assertEquals(Long.MAX_VALUE, Records.numberAtStartOf("9223372036854775807"));
    assertEquals(Long.MAX_VALUE, Records.numberAtStartOf("9223372036854775808"));
    assertEquals(Long.MAX_VALUE, Records.numberAtStartOf("99999999999999999999999"));
    assertEquals(Long.MIN_VALUE, Records.numberAtStartOf("-9223372036854775808"));
    assertEquals(Long.MIN_VALUE, Records.numberAtStartOf("-9223372036854775809"));
  }
}
