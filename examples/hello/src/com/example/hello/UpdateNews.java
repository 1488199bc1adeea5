package com.example.hello;

import io.quillory.api.Release;
import io.quillory.api.UpdateState;
import io.quillory.api.Updates;

/** What this application says about its updates. */
final class UpdateNews {
  private UpdateNews() {}

  /** A line for people, or "" where there is no news. */
  static String of(UpdateState state, Release release) {
    String version = release == null ? "" : release.shownVersion();
    switch (state.phase()) {
      case CHECKING:
        return "Looking for updates\u2026";
      case AVAILABLE:
        return "Version " + version + " is there";
      case DOWNLOADING:
        return "Loading" + percentOf(state) + "\u2026";
      case STAGED:
        return "Version " + version + " is ready \u2013 restart";
      case FAILED:
        return "The update failed: " + state.reason();
      default:
        return "";
    }
  }

  /** What this start is about, or "" for one like every other. */
  private static String ofThisStart(Updates updates) {
    if (updates.justUpdatedFrom() != null) {
      return "Updated from version " + updates.justUpdatedFrom();
    }
    if (updates.wentBackFrom() != null) {
      return "Version " + updates.wentBackFrom() + " did not work: back to this one";
    }
    return "";
  }

  /** What there is to be said when the application has just started. */
  static String atStart(Updates updates) {
    String ofThisStart = ofThisStart(updates);
    return ofThisStart.isEmpty() ? of(updates.state(), updates.release()) : ofThisStart;
  }

  private static String percentOf(UpdateState state) {
    return state.total() == 0 ? "" : " " + 100 * state.done() / state.total() + " %";
  }
}
