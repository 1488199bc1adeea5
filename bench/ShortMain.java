/** Says that it runs, and ends: the application of the comparison of starts. */
public final class ShortMain {
  private ShortMain() {}

  public static void main(String[] args) {
    System.out.println("main has run");
  }
}
