/** The example's one module. */
module com.example.pages {
  requires java.desktop;
  requires org.apache.commons.lang3;
}
