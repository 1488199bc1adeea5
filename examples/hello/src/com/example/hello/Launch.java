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

  /** The path of the launch-properties file; null where no launcher has started this. */
  final String propertiesPath;
  /** Keys and values in turn, in the order of the file. */
  final List<String> properties;
  /** Why there are no properties; null when there are. */
  final String problem;
  /** The user's arguments, behind those that the configuration names. */
  final List<String> arguments;

  private Launch(String path, List<String> properties, String problem, List<String> arguments) {
    this.propertiesPath = path;
    this.properties = properties;
    this.problem = problem;
    this.arguments = arguments;
  }

  /**
   * The path is a system property. With <code>launch-properties = "argument"</code> in
   * quillory.toml it is the first argument, too, as it always was once.
   */
  static Launch of(String[] args) {
    boolean isArgument = !"user".equals(System.getProperty("quillory.arguments"));
    String path = System.getProperty("quillory.launch.properties");
    if (isArgument && args.length > 0) {
      path = args[0];
    }
    int before = isArgument && args.length > 0 ? 1 : 0;
    List<String> arguments = Arrays.asList(args).subList(before, args.length);
    List<String> none = new ArrayList<String>();
    if (path == null) {
      return new Launch(null, none, "not started by a launcher", arguments);
    }
    try {
      return new Launch(path, entriesOf(contentOf(new File(path))), null, arguments);
    } catch (IOException e) {
      return new Launch(path, none, e.getMessage(), arguments);
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
