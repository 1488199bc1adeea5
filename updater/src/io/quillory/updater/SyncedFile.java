package io.quillory.updater;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;

/** Files that are there whole, or not at all. */
final class SyncedFile {
  private SyncedFile() {}

  /** Whatever ends this process or the machine: {@code file} is what it was, or has this content. */
  static void replace(File file, String content) throws IOException {
    replace(file, content.getBytes(StandardCharsets.UTF_8));
  }

  static void replace(File file, byte[] content) throws IOException {
    // Two starts at once each have one of their own.
    File beside = File.createTempFile(file.getName() + "-", ".new", file.getParentFile());
    boolean isDone = false;
    try {
      FileOutputStream out = new FileOutputStream(beside);
      try {
        out.write(content);
        out.getFD().sync();
      } finally {
        out.close();
      }
      isDone = beside.renameTo(file);
      if (!isDone) {
        throw new IOException(beside + " cannot be renamed to " + file.getName() + ".");
      }
    } finally {
      if (!isDone) {
        beside.delete();
      }
    }
  }
}
