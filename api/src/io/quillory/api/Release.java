package io.quillory.api;

/** A version of the application that is offered, or ready. */
public final class Release {
  private final long number;
  private final String version;
  private final String shownVersion;
  private final long size;
  private final boolean isCritical;
  private final String notes;

  Release(
      long number,
      String version,
      String shownVersion,
      long size,
      boolean isCritical,
      String notes) {
    this.number = number;
    this.version = version;
    this.shownVersion = shownVersion;
    this.size = size;
    this.isCritical = isCritical;
    this.notes = notes;
  }

  /**
   * The number of the release, which only grows.
   *
   * @return 0 where it is no longer known
   */
  public long number() {
    return number;
  }

  /**
   * The version by which Quillory compares.
   *
   * @return such as "2"
   */
  public String version() {
    return version;
  }

  /**
   * The version as people know it.
   *
   * @return such as "1.2", or {@link #version()} where there is no other
   */
  public String shownVersion() {
    return shownVersion.isEmpty() ? version : shownVersion;
  }

  /**
   * What has to be loaded for it.
   *
   * @return bytes; 0 when it is ready
   */
  public long size() {
    return size;
  }

  /**
   * Whether the version that runs should not run any longer.
   *
   * @return true for a critical release
   */
  public boolean isCritical() {
    return isCritical;
  }

  /**
   * What is new.
   *
   * @return text in Markdown, or ""
   */
  public String notes() {
    return notes;
  }

  @Override
  public boolean equals(Object other) {
    if (!(other instanceof Release)) {
      return false;
    }
    Release that = (Release) other;
    return number == that.number
        && version.equals(that.version)
        && shownVersion.equals(that.shownVersion)
        && size == that.size
        && isCritical == that.isCritical
        && notes.equals(that.notes);
  }

  @Override
  public int hashCode() {
    return version.hashCode() * 31 + Long.hashCode(number);
  }

  @Override
  public String toString() {
    return shownVersion();
  }
}
