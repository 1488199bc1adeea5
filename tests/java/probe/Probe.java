import java.io.File;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;

/** Says what it was started with, for the tests. */
public final class Probe {
  private Probe() {}

  public static void main(String[] args) throws Exception {
    StringBuilder text = new StringBuilder("PROBE ").append(args.length).append(" arguments\n");
    for (String arg : args) {
      text.append("arg [").append(arg).append("]");
      for (int i = 0; i < arg.length(); i++) {
        text.append(' ').append(Integer.toHexString(arg.charAt(i)));
      }
      text.append('\n');
    }
    text.append("class path ").append(System.getProperty("java.class.path")).append('\n');
    text.append("option ").append(System.getProperty("probe.option")).append('\n');
    text.append("pid ").append(ProcessHandle.current().pid()).append('\n');
    say(text.toString());
    for (String arg : args) {
      if (arg.equals("--try")) beginTry(new File(args[0]));
      if (arg.equals("--terminate")) terminate();
      if (arg.startsWith("--file=")) writeTo(new File(arg.substring(7)), text.toString());
      if (arg.startsWith("--exit=")) System.exit(Integer.parseInt(arg.substring(7)));
      if (arg.equals("--throw")) throw new IllegalStateException("thrown on purpose");
      if (arg.equals("--thread")) startThread();
    }
  }

  private static void say(String text) throws IOException {
    new FileOutputStream(FileDescriptor.out).write(text.getBytes(StandardCharsets.UTF_8));
  }

  /** The file is there when it is complete. */
  private static void writeTo(File file, String text) throws IOException {
    File part = new File(file.getPath() + ".part");
    FileOutputStream out = new FileOutputStream(part);
    out.write(text.getBytes(StandardCharsets.UTF_8));
    out.close();
    if (!part.renameTo(file)) throw new IOException("Cannot write " + file);
  }

  /** As the updater does: a file that is named after the properties. */
  private static void beginTry(File properties) throws IOException {
    File master = properties.getParentFile().getParentFile();
    String stamp = properties.getName().substring("QYLaunchProperties-".length());
    writeTo(new File(master, "QYUpdates/try-" + stamp), "folder\n");
  }

  /** As a log-out does. */
  private static void terminate() throws Exception {
    new ProcessBuilder("kill", "-TERM", "" + ProcessHandle.current().pid()).start();
    Thread.sleep(60_000);
  }

  /** A thread that outlives main(). */
  private static void startThread() {
    new Thread(
            () -> {
              try {
                Thread.sleep(200);
                say("PROBE thread has ended\n");
              } catch (InterruptedException | IOException e) {
                throw new IllegalStateException(e);
              }
            })
        .start();
  }
}
