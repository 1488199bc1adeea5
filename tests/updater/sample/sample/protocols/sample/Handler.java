package sample.protocols.sample;

import java.net.URL;
import java.net.URLConnection;
import java.net.URLStreamHandler;

/** Of URLs that begin with "sample:"; the JDK makes one by the class's name. */
public class Handler extends URLStreamHandler {
  @Override
  protected URLConnection openConnection(URL url) {
    return new URLConnection(url) {
      @Override
      public void connect() {}

      @Override
      public String getContentType() {
        return "of the application: " + url.getPath();
      }
    };
  }
}
