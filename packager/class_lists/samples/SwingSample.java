import java.awt.BorderLayout;
import java.awt.event.WindowEvent;
import javax.swing.BorderFactory;
import javax.swing.JButton;
import javax.swing.JCheckBox;
import javax.swing.JComboBox;
import javax.swing.JFrame;
import javax.swing.JLabel;
import javax.swing.JMenu;
import javax.swing.JMenuBar;
import javax.swing.JMenuItem;
import javax.swing.JPanel;
import javax.swing.JScrollPane;
import javax.swing.JSplitPane;
import javax.swing.JTabbedPane;
import javax.swing.JTable;
import javax.swing.JTextArea;
import javax.swing.JTextField;
import javax.swing.JToolBar;
import javax.swing.JTree;
import javax.swing.KeyStroke;
import javax.swing.SwingUtilities;
import javax.swing.Timer;

/** A window with what most of Swing's applications show first, which closes itself. */
public final class SwingSample {
  private SwingSample() {}

  public static void main(String[] args) {
    SwingUtilities.invokeLater(SwingSample::show);
  }

  private static void show() {
    JFrame frame = new JFrame("Swing sample");
    frame.setDefaultCloseOperation(JFrame.EXIT_ON_CLOSE);
    frame.setJMenuBar(menus());
    frame.add(tools(), BorderLayout.NORTH);
    frame.add(content(), BorderLayout.CENTER);
    frame.add(new JLabel("Ready"), BorderLayout.SOUTH);
    frame.setSize(800, 600);
    frame.setLocationRelativeTo(null);
    frame.setVisible(true);
    Timer end =
        new Timer(
            2000,
            event -> frame.dispatchEvent(new WindowEvent(frame, WindowEvent.WINDOW_CLOSING)));
    end.setRepeats(false);
    end.start();
  }

  private static JMenuBar menus() {
    JMenuBar bar = new JMenuBar();
    for (String name : new String[] {"File", "Edit", "Help"}) {
      JMenu menu = new JMenu(name);
      menu.setMnemonic(name.charAt(0));
      JMenuItem item = new JMenuItem("Open...");
      item.setAccelerator(KeyStroke.getKeyStroke("ctrl O"));
      item.addActionListener(event -> {});
      menu.add(item);
      menu.addSeparator();
      bar.add(menu);
    }
    return bar;
  }

  private static JToolBar tools() {
    JToolBar bar = new JToolBar();
    bar.add(new JButton("New"));
    bar.addSeparator();
    bar.add(new JTextField("Find", 12));
    bar.add(new JComboBox<>(new String[] {"All", "None"}));
    return bar;
  }

  private static JSplitPane content() {
    JTabbedPane tabs = new JTabbedPane();
    tabs.addTab("Text", new JScrollPane(new JTextArea("Text of\na few lines.")));
    Object[][] cells = {{"one", 1}, {"two", 2}};
    tabs.addTab("Table", new JScrollPane(new JTable(cells, new Object[] {"Name", "Number"})));
    JPanel options = new JPanel();
    options.setBorder(BorderFactory.createTitledBorder("Options"));
    options.add(new JCheckBox("Show hidden files"));
    tabs.addTab("Options", options);
    JSplitPane split = new JSplitPane();
    split.setLeftComponent(new JScrollPane(new JTree()));
    split.setRightComponent(tabs);
    return split;
  }
}
