package io.quillory.updater;

/**
 * Run by the launcher under a Java runtime that it found on the system, before it takes it over. A
 * runtime that gets as far as this class can run the updater.
 */
public final class JreCompatibility {
  /** What the launcher takes for "compatible". */
  static final int COMPATIBLE = 72;

  private JreCompatibility() {}

  public static void main(String[] arguments) {
    System.exit(COMPATIBLE);
  }
}
