/** A class that cannot be started. */
public final class NoMain {
  private NoMain() {}
}
