package io.quillory.api;

import static org.junit.Assert.assertEquals;

import org.junit.Test;

public class LineTest {
  @Test
  public void aLineIsAWordAndValues() {
    Line line = new Line("offer release=7 version=2 shown=1.2%20beta%C3%BC critical=0");
    assertEquals("offer", line.word);
    assertEquals(7, line.number("release"));
    assertEquals("2", line.get("version"));
    assertEquals("1.2 beta\u00fc", line.get("shown"));
    assertEquals("", line.get("elease"));
    assertEquals(0, line.number("shown"));
  }

  @Test
  public void whatIsNoEncodingStandsForItself() {
    assertEquals("100%", new Line("x k=100%").get("k"));
    assertEquals("%2", new Line("x k=%2").get("k"));
    assertEquals("%zz=", new Line("x k=%zz=").get("k"));
    assertEquals("", new Line("").word);
  }
}
