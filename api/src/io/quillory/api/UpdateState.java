package io.quillory.api;

/** What is known about updates at one moment. It does not change. */
public final class UpdateState {
  /** How far an update is. */
  public enum Phase {
    /** The newest version runs, as far as is known; also outside of the launcher. */
    NONE,
    /** The server is being asked. */
    CHECKING,
    /** There is a release: {@link Updates#release()}. */
    AVAILABLE,
    /** It is being loaded: {@link UpdateState#done()} of {@link UpdateState#total()} bytes. */
    DOWNLOADING,
    /** It is ready: the next start is the new version. {@link Updates#restartToUpdate}. */
    STAGED,
    /** The last attempt failed: {@link UpdateState#reason()}. It is tried again. */
    FAILED,
    /** No news has come for longer than there should be none: {@link UpdateState#since()}. */
    FROZEN,
    /** The packager, the user or the administrator wants no updates. */
    OFF
  }

  static final UpdateState NOTHING = new UpdateState(Phase.NONE, "", 0, 0, 0);

  private final Phase phase;
  private final String reason;
  private final long sinceMillis;
  private final long done;
  private final long total;

  UpdateState(Phase phase, String reason, long sinceMillis, long done, long total) {
    this.phase = phase;
    this.reason = reason;
    this.sinceMillis = sinceMillis;
    this.done = done;
    this.total = total;
  }

  /**
   * How far it is.
   *
   * @return never null
   */
  public Phase phase() {
    return phase;
  }

  /**
   * Why it failed, or is off.
   *
   * @return text for people, or ""
   */
  public String reason() {
    return reason;
  }

  /**
   * When the last news came, of {@link Phase#FROZEN}.
   *
   * @return milliseconds since 1970, or 0
   */
  public long since() {
    return sinceMillis;
  }

  /**
   * What has been loaded, of {@link Phase#DOWNLOADING}.
   *
   * @return bytes, or 0 where nobody counts them
   */
  public long done() {
    return done;
  }

  /**
   * What is to be loaded in all, of {@link Phase#DOWNLOADING}.
   *
   * @return bytes, or 0 where nobody counts them
   */
  public long total() {
    return total;
  }

  @Override
  public boolean equals(Object other) {
    if (!(other instanceof UpdateState)) {
      return false;
    }
    UpdateState that = (UpdateState) other;
    return phase == that.phase
        && reason.equals(that.reason)
        && sinceMillis == that.sinceMillis
        && done == that.done
        && total == that.total;
  }

  @Override
  public int hashCode() {
    return phase.hashCode() * 31 + Long.hashCode(done);
  }

  @Override
  public String toString() {
    return phase == Phase.DOWNLOADING ? phase + " " + done + "/" + total : phase.toString();
  }
}
