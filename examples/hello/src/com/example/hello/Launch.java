package com.example.hello;

import java.io.File;
import java.io.FileInputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/** What an application is given at its start: properties, the requested URL, arguments. */
final class Launch {
  private static final String EMPTY = "\u0004";
  private static final String URL_KEY = "qydyna_url_req";

  /** The path of the launch-properties file; null when there is no argument. */
  final String propertiesPath;
  /** Keys and values in turn, in the order of the file. */
  final List<String> properties;
  /** Why there are no properties; null when there are. */
  final String problem;
  /** The arguments behind the path. */
  final List<String> arguments;

  private Launch(String path, List<String> properties, String problem, List<String> arguments) {
    this.propertiesPath = path;
    this.properties = properties;
    this.problem = problem;
    this.arguments = arguments;
  }

  static Launch of(String[] args) {
    List<String> none = new ArrayList<String>();
    if (args.length == 0) {
      return new Launch(null, none, "not started by a launcher", none);
    }
    List<String> arguments = Arrays.asList(args).subList(1, args.length);
    try {
      return new Launch(args[0], entriesOf(contentOf(new File(args[0]))), null, arguments);
    } catch (IOException e) {
      return new Launch(args[0], none, e.getMessage(), arguments);
    }
  }

  /** The URL that the user asked to open, or null. */
  String requestedUrl() {
    for (int i = 0; i + 1 < properties.size(); i += 2) {
      if (properties.get(i).equals(URL_KEY)) {
        return properties.get(i + 1);
      }
    }
    return null;
  }

  /** Texts with one zero byte between two of them; the byte 0x04 alone stands for no text. */
  private static List<String> entriesOf(byte[] bytes) {
    List<String> entries = new ArrayList<String>();
    int start = 0;
    for (int i = 0; i <= bytes.length && bytes.length > 0; i++) {
      if (i == bytes.length || bytes[i] == 0) {
        String entry = new String(bytes, start, i - start, StandardCharsets.UTF_8);
        entries.add(entry.equals(EMPTY) ? "" : entry);
        start = i + 1;
      }
    }
    return entries;
  }

  private static byte[] contentOf(File file) throws IOException {
    FileInputStream in = new FileInputStream(file);
    try {
      byte[] bytes = new byte[(int) file.length()];
      int length = 0;
      int count;
      while (length < bytes.length && (count = in.read(bytes, length, bytes.length - length)) > 0) {
        length += count;
      }
      return Arrays.copyOf(bytes, length);
    } finally {
      in.close();
    }
  }
}
