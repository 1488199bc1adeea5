package io.quillory.api;

import java.io.ByteArrayOutputStream;
import java.nio.charset.StandardCharsets;

/** A line of quillory-update: a word, and keys with values whose other bytes are "%" and two digits. */
final class Line {
  final String word;
  private final String[] parts;

  Line(String text) {
    parts = text.split(" ");
    word = parts[0];
  }

  /** The value of a key, or "". */
  String get(String key) {
    String start = key + '=';
    for (String part : parts) {
      if (part.startsWith(start)) {
        return decoded(part.substring(start.length()));
      }
    }
    return "";
  }

  /** The value as a number, or 0. */
  long number(String key) {
    try {
      return Long.parseLong(get(key));
    } catch (NumberFormatException e) {
      return 0;
    }
  }

  private static String decoded(String value) {
    ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    byte[] given = value.getBytes(StandardCharsets.UTF_8);
    for (int i = 0; i < given.length; i++) {
      int high = i + 2 < given.length ? Character.digit(given[i + 1], 16) : -1;
      int low = i + 2 < given.length ? Character.digit(given[i + 2], 16) : -1;
      if (given[i] == '%' && high >= 0 && low >= 0) {
        bytes.write(high << 4 | low);
        i += 2;
      } else {
        bytes.write(given[i]);
      }
    }
    return new String(bytes.toByteArray(), StandardCharsets.UTF_8);
  }
}
