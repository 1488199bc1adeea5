package io.quillory.api;

import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;

/** What quillory-update has left behind: the file "state" of the folder for updates. */
final class StateFile {
  private static final String FORMAT = "1";
  private static final StateFile NONE = new StateFile(new byte[0]);
  private static final int SECOND = 1000;

  final UpdateState state;
  /** Null where nothing is offered. */
  final Release offer;

  private final byte[] bytes;
  private int position;

  private StateFile(byte[] bytes) {
    this.bytes = bytes;
    if (!next().equals(FORMAT)) {
      state = UpdateState.NOTHING;
      offer = null;
      return;
    }
    next(); // The highest release.
    next(); // What rollouts are drawn by.
    next(); // The last check.
    long lastAnswer = number();
    next(); // The ETag of that answer.
    for (long keys = number(); keys > 0 && position < bytes.length; keys--) {
      next();
    }
    UpdateState.Phase phase = phaseOf(next());
    String reason = next();
    long since = phase == UpdateState.Phase.FROZEN ? lastAnswer * SECOND : 0;
    state = new UpdateState(phase, reason, since, 0, 0);
    long release = number();
    String version = next();
    String shown = next();
    long size = number();
    boolean isCritical = number() == 1;
    String notes = next();
    offer = release > 0 ? new Release(release, version, shown, size, isCritical, notes) : null;
  }

  /** Of a folder for updates; without a file nothing is known. */
  static StateFile read(File updateFolder) {
    try {
      return new StateFile(Files.readAllBytes(new File(updateFolder, "state").toPath()));
    } catch (IOException e) {
      return NONE;
    }
  }

  private static UpdateState.Phase phaseOf(String name) {
    try {
      return UpdateState.Phase.valueOf(name);
    } catch (IllegalArgumentException e) {
      return UpdateState.Phase.NONE; // Of a newer program.
    }
  }

  private String next() {
    int start = position;
    int end = start;
    while (end < bytes.length && bytes[end] != 0) {
      end++;
    }
    position = Math.min(end + 1, bytes.length);
    return new String(bytes, start, end - start, StandardCharsets.UTF_8);
  }

  private long number() {
    try {
      return Long.parseLong(next());
    } catch (NumberFormatException e) {
      return 0;
    }
  }
}
