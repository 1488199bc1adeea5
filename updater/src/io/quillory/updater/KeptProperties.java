package io.quillory.updater;

import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.util.Arrays;

/**
 * The launch properties of the newest start, in the folder for updates. Those in the updater's
 * folder are deleted by later starts, and a check comes hours after the start.
 */
final class KeptProperties {
  static final String NAME = "properties";

  private KeptProperties() {}

  static void keep(File properties, File updateFolder) throws IOException {
    if (!updateFolder.isDirectory()) {
      return;
    }
    File kept = new File(updateFolder, NAME);
    byte[] content = Files.readAllBytes(properties.toPath());
    if (!kept.isFile() || !Arrays.equals(content, Files.readAllBytes(kept.toPath()))) {
      SyncedFile.replace(kept, content);
    }
  }
}
