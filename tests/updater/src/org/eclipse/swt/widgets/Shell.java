package org.eclipse.swt.widgets;

/** A stand-in for the toolkit's window. */
public class Shell {
  public volatile boolean isVisible;

  public boolean isVisible() {
    return isVisible;
  }
}
