import java.io.File;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Paths;

/**
 * Says what it was started with, a line each, so that a test can compare it. Runs with every Java
 * from version 8 on, which has no name for its own process.
 */
public final class Report {
  private Report() {}

  public static void main(String[] args) throws Exception {
    StringBuilder out = new StringBuilder("REPORT BEGIN\n");
    out.append("pid=").append(new File("/proc/self").getCanonicalFile().getName()).append('\n');
    for (int i = 0; i < args.length; i++) {
      out.append("arg ").append(i).append('=').append(args[i]).append('\n');
    }
    out.append("maxMemory=").append(Runtime.getRuntime().maxMemory() >> 20).append('\n');
    out.append("home=").append(System.getProperty("java.home")).append('\n');
    out.append("class.path=").append(System.getProperty("java.class.path")).append('\n');
    if (args.length > 0) {
      byte[] bytes = Files.readAllBytes(Paths.get(args[0]));
      String[] entries = new String(bytes, StandardCharsets.UTF_8).split("\0", -1);
      for (int i = 0; i + 1 < entries.length; i += 2) {
        String value = entries[i + 1].equals("\u0004") ? "" : entries[i + 1];
        out.append("property ").append(entries[i]).append('=').append(value).append('\n');
      }
    }
    out.append("REPORT END\n");
    System.out.write(out.toString().getBytes(StandardCharsets.UTF_8));
    System.out.flush();
    for (String arg : args) {
      if (arg.startsWith("--exit=")) System.exit(Integer.parseInt(arg.substring(7)));
      if (arg.startsWith("--sleep=")) Thread.sleep(Long.parseLong(arg.substring(8)));
      if (arg.equals("--throw")) throw new IllegalStateException("thrown on purpose");
    }
  }
}
