/** A compatibility class: its exit status is the number of its last argument, or 72. */
public final class Compatible {
  private Compatible() {}

  public static void main(String[] args) {
    String last = args.length < 2 ? "72" : args[args.length - 1];
    System.exit(Integer.parseInt(last));
  }
}
