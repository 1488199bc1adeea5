package sample;

final class Hidden {
  private Hidden() {}

  public static void main(String[] args) {
    System.out.print("hidden\n");
  }
}
