/** A JRE-compatibility class that accepts the JRE that it runs on. */
public final class Compatible {
  private Compatible() {}

  public static void main(String[] args) {
    System.exit(72);
  }
}
