package sample;

public final class NotStatic {
  public void main(String[] args) {}
}
