package io.quillory.updater;

import java.io.File;
import java.io.FileInputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;

/**
 * The values of a file, each ended by one zero byte, read in an order that the reader knows. Behind
 * the last value every further one is "" or 0.
 */
final class Records {
  private final byte[] bytes;
  private int position;

  Records(byte[] bytes) {
    this.bytes = bytes;
  }

  static Records of(File file) throws IOException {
    FileInputStream in = new FileInputStream(file);
    try {
      byte[] bytes = new byte[(int) Math.min(file.length(), Integer.MAX_VALUE / 2)];
      int length = 0;
      int count;
      while (length < bytes.length && (count = in.read(bytes, length, bytes.length - length)) > 0) {
        length += count;
      }
      return new Records(length == bytes.length ? bytes : Arrays.copyOf(bytes, length));
    } finally {
      in.close();
    }
  }

  boolean isAtEnd() {
    return position >= bytes.length;
  }

  /** The next value; the last one may lack its zero byte. */
  String next() {
    int start = position;
    int end = start;
    while (end < bytes.length && bytes[end] != 0) {
      end++;
    }
    position = Math.min(end + 1, bytes.length);
    return new String(bytes, start, end - start, StandardCharsets.UTF_8);
  }

  /** Passes over so many values, without making texts of them. */
  void skip(long count) {
    for (long left = count; left > 0 && !isAtEnd(); left--) {
      while (position < bytes.length && bytes[position] != 0) {
        position++;
      }
      position = Math.min(position + 1, bytes.length);
    }
  }

  long nextNumber() {
    return numberAtStartOf(next());
  }

  /** As the launcher reads numbers: "12abc" is 12, "abc" is 0; too large ones stop at the limit. */
  static long numberAtStartOf(String text) {
    int i = 0;
    while (i < text.length() && isSpace(text.charAt(i))) {
      i++;
    }
    boolean isNegative = i < text.length() && text.charAt(i) == '-';
    if (isNegative || (i < text.length() && text.charAt(i) == '+')) {
      i++;
    }
    // Counted downwards, because there is one more number below zero than above.
    long number = 0;
    for (; i < text.length() && text.charAt(i) >= '0' && text.charAt(i) <= '9'; i++) {
      int digit = text.charAt(i) - '0';
      if (number < (Long.MIN_VALUE + digit) / 10) {
        return isNegative ? Long.MIN_VALUE : Long.MAX_VALUE;
      }
      number = number * 10 - digit;
    }
    if (isNegative) {
      return number;
    }
    return number == Long.MIN_VALUE ? Long.MAX_VALUE : -number;
  }

  private static boolean isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
  }
}
