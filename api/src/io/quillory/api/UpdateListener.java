package io.quillory.api;

/** Hears of updates. */
public interface UpdateListener {
  /**
   * Something has changed. Called on a thread of its own: a window is to be touched on its
   * toolkit's, by {@code EventQueue.invokeLater} or {@code Platform.runLater}.
   *
   * @param state what holds now
   */
  void changed(UpdateState state);
}
