package sample;

public final class NoMain {
  private NoMain() {}

  static void main(String[] args) {}
}
