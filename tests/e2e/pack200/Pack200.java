import java.io.BufferedInputStream;
import java.io.ByteArrayOutputStream;
import java.io.DataInputStream;
import java.io.EOFException;
import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.jar.JarEntry;
import java.util.jar.JarOutputStream;
import java.util.zip.ZipEntry;
import java.util.zip.ZipInputStream;

/**
 * What a test needs of pack200, whose tools no JDK has any more: archives of one segment that carry
 * every file of a jar as it is, classes too, as "pack200 --pass-file" makes them.
 *
 * <p>The segment is that of JSR 200, version 150.7. Numbers are UNSIGNED5: digits of base 64, the
 * lowest first, of which all but the last are 192 to 255.
 */
public final class Pack200 {
  private static final int MAGIC = 0xCAFED00D;
  private static final int MINOR = 7;
  private static final int MAJOR = 150;
  private static final int HAVE_FILE_HEADERS = 1 << 4;
  /** Counts of constants that are no texts, and of classes: all 0 here. */
  private static final int OTHER_COUNTS = 11;

  private Pack200() {}

  /** Usage: pack IN.jar OUT, or unpack IN OUT.jar. */
  public static void main(String[] args) throws IOException {
    Path in = Paths.get(args[1]);
    Path out = Paths.get(args[2]);
    if (args[0].equals("pack")) {
      Files.write(out, pack(readJar(in)));
    } else {
      Map<String, byte[]> files = unpack(in);
      writeJar(files, out);
    }
  }

  private static Map<String, byte[]> readJar(Path path) throws IOException {
    Map<String, byte[]> files = new LinkedHashMap<>();
    try (ZipInputStream jar = new ZipInputStream(Files.newInputStream(path))) {
      for (ZipEntry entry = jar.getNextEntry(); entry != null; entry = jar.getNextEntry()) {
        files.put(entry.getName(), jar.readAllBytes());
      }
    }
    return files;
  }

  private static void writeJar(Map<String, byte[]> files, Path path) throws IOException {
    try (JarOutputStream jar = new JarOutputStream(Files.newOutputStream(path))) {
      for (Map.Entry<String, byte[]> file : files.entrySet()) {
        jar.putNextEntry(new JarEntry(file.getKey()));
        jar.write(file.getValue());
      }
    }
  }

  private static byte[] pack(Map<String, byte[]> files) {
    Bands out = new Bands();
    for (int shift = 24; shift >= 0; shift -= 8) {
      out.write(MAGIC >> shift);
    }
    out.numbers(MINOR, MAJOR, HAVE_FILE_HEADERS);
    out.numbers(0, 0, 0, 0, files.size()); // sizes, segments to come, time: not told
    out.numbers(files.size() + 1); // texts, with the empty one that every archive has
    for (int i = 0; i < OTHER_COUNTS; i++) {
      out.numbers(0);
    }
    for (int i = 1; i < files.size(); i++) {
      out.numbers(0); // no text shares its beginning with the one before
    }
    out.band(files.keySet().stream().mapToInt(String::length).toArray());
    for (String name : files.keySet()) {
      out.writeBytes(name.getBytes(StandardCharsets.US_ASCII));
    }
    for (int i = 1; i <= files.size(); i++) {
      out.numbers(i); // the names of the files are the texts
    }
    out.band(files.values().stream().mapToInt(content -> content.length).toArray());
    files.values().forEach(out::writeBytes);
    return out.toByteArray();
  }

  private static final class Bands extends ByteArrayOutputStream {
    void numbers(int... values) {
      for (int value : values) {
        int rest = value;
        while (rest >= 192) {
          write(192 + (rest - 192) % 64);
          rest = (rest - 192) / 64;
        }
        write(rest);
      }
    }

    /** A band whose first number has two digits would be taken for one with another coding. */
    void band(int... values) {
      if (values.length > 0 && values[0] >= 192 && values[0] < 192 + 256) {
        throw new IllegalArgumentException("put another file first");
      }
      numbers(values);
    }
  }

  private static Map<String, byte[]> unpack(Path path) throws IOException {
    try (DataInputStream in =
        new DataInputStream(new BufferedInputStream(Files.newInputStream(path)))) {
      if (in.readInt() != MAGIC) {
        throw new IOException("not packed by pack200");
      }
      expect(in, MINOR);
      expect(in, MAJOR);
      expect(in, HAVE_FILE_HEADERS);
      numbers(in, 4);
      int files = number(in);
      expect(in, files + 1);
      for (int i = 0; i < OTHER_COUNTS; i++) {
        expect(in, 0);
      }
      for (int i = 1; i < files; i++) {
        expect(in, 0);
      }
      List<byte[]> names = texts(in, numbers(in, files));
      for (int i = 1; i <= files; i++) {
        expect(in, i);
      }
      List<byte[]> contents = texts(in, numbers(in, files));
      Map<String, byte[]> unpacked = new LinkedHashMap<>();
      for (int i = 0; i < files; i++) {
        unpacked.put(new String(names.get(i), StandardCharsets.US_ASCII), contents.get(i));
      }
      return unpacked;
    }
  }

  private static void expect(InputStream in, int value) throws IOException {
    int found = number(in);
    if (found != value) {
      throw new IOException("more than files: " + found + " instead of " + value);
    }
  }

  private static int number(InputStream in) throws IOException {
    int value = 0;
    for (int shift = 0; shift <= 24; shift += 6) {
      int digit = in.read();
      if (digit < 0) {
        throw new EOFException();
      }
      value += digit << shift;
      if (digit < 192) {
        break;
      }
    }
    return value;
  }

  private static int[] numbers(InputStream in, int count) throws IOException {
    int[] values = new int[count];
    for (int i = 0; i < count; i++) {
      values[i] = number(in);
    }
    return values;
  }

  private static List<byte[]> texts(InputStream in, int[] lengths) throws IOException {
    List<byte[]> texts = new ArrayList<>();
    for (int length : lengths) {
      byte[] text = in.readNBytes(length);
      if (text.length < length) {
        throw new EOFException();
      }
      texts.add(text);
    }
    return texts;
  }
}
