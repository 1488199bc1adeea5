package sample;

/** An application that says what it was given. */
public final class Sample {
  private Sample() {}

  public static void main(String[] args) {
    StringBuilder text = new StringBuilder();
    for (String arg : args) {
      text.append("argument ").append(arg).append('\n');
    }
    text.append("class path ").append(System.getProperty("java.class.path")).append('\n');
    ClassLoader loader = Thread.currentThread().getContextClassLoader();
    text.append("context loader is mine: ").append(loader == Sample.class.getClassLoader());
    text.append("\nsees the updater: ").append(sees("io.quillory.updater.Main")).append('\n');
    for (String arg : args) {
      if (arg.equals("--thread")) {
        text.append("thread ").append(Thread.currentThread().getName()).append('\n');
      } else if (arg.startsWith("--property=")) {
        text.append("property ").append(System.getProperty(arg.substring(11))).append('\n');
      } else if (arg.startsWith("--library=")) {
        text.append("library ").append(load(arg.substring(10))).append('\n');
      } else if (arg.startsWith("--open=")) {
        text.append("opened ").append(open(arg.substring(7))).append('\n');
      } else if (arg.equals("--module")) {
        text.append("module of a name: ").append(isOfNamedModule()).append('\n');
      } else if (arg.equals("--system-loader")) {
        ClassLoader own = Sample.class.getClassLoader();
        text.append("system loader is mine: ").append(own == ClassLoader.getSystemClassLoader());
        text.append('\n');
      } else if (arg.equals("--throw")) {
        throw new IllegalStateException("thrown on purpose");
      } else if (arg.startsWith("--exit=")) {
        System.exit(Integer.parseInt(arg.substring(7)));
      }
    }
    System.out.print(text);
  }

  /** What the JVM says when it cannot load the library. */
  private static String load(String library) {
    try {
      System.loadLibrary(library);
      return "loaded";
    } catch (UnsatisfiedLinkError e) {
      return e.getMessage();
    }
  }

  /** What a handler of the application's own says, which the JDK has to find by its name. */
  private static String open(String url) {
    System.setProperty("java.protocol.handler.pkgs", "sample.protocols");
    try {
      return new java.net.URL(url).openConnection().getContentType();
    } catch (java.io.IOException e) {
      return e.getMessage();
    }
  }

  /** Asked for by its name, because Java 8 has no modules. */
  private static boolean isOfNamedModule() {
    try {
      Object module = Class.class.getMethod("getModule").invoke(Sample.class);
      return (Boolean) module.getClass().getMethod("isNamed").invoke(module);
    } catch (ReflectiveOperationException e) {
      return false;
    }
  }

  private static boolean sees(String className) {
    try {
      Class.forName(className);
      return true;
    } catch (ClassNotFoundException e) {
      return false;
    }
  }
}
