/**
 * Says that it runs, and ends: the application of the comparison of starts. With an argument it ends
 * when its standard input does.
 */
public final class ShortMain {
  private ShortMain() {}

  public static void main(String[] args) throws java.io.IOException {
    System.out.println("main has run");
    if (args.length > 0) {
      System.in.read();
    }
  }
}
