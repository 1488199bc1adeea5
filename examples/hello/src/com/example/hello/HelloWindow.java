package com.example.hello;

import io.quillory.api.Updates;
import java.awt.AWTError;
import java.awt.BorderLayout;
import java.awt.Color;
import java.awt.Component;
import java.awt.Dimension;
import java.awt.EventQueue;
import java.awt.Font;
import java.awt.GradientPaint;
import java.awt.Graphics;
import java.awt.Graphics2D;
import java.awt.GraphicsEnvironment;
import java.awt.HeadlessException;
import java.awt.RenderingHints;
import javax.swing.BorderFactory;
import javax.swing.JButton;
import javax.swing.JComponent;
import javax.swing.JFrame;
import javax.swing.JMenu;
import javax.swing.JMenuBar;
import javax.swing.JMenuItem;
import javax.swing.JScrollPane;
import javax.swing.JTable;
import javax.swing.ScrollPaneConstants;
import javax.swing.SwingConstants;
import javax.swing.Timer;
import javax.swing.table.DefaultTableCellRenderer;
import javax.swing.table.DefaultTableModel;

/** The window of the sample application. */
final class HelloWindow {
  private static final Color INK = new Color(0x1F2A44);
  private static final Color STRIPE = new Color(0xF3F6FB);
  private static final Color HEADER_LEFT = new Color(0x22577A);
  private static final Color HEADER_RIGHT = new Color(0x57CC99);
  private static final Dimension SIZE = new Dimension(720, 480);
  private static final int HEADER_HEIGHT = 96;
  private static final int MARGIN = 24;
  private static final int GAP = 8;
  private static final int ROW_HEIGHT = 26;

  private HelloWindow() {}

  /** Returns at once; throws IllegalStateException when no window can be shown. */
  static void show(Launch launch, int closeAfterMillis) {
    try {
      GraphicsEnvironment.getLocalGraphicsEnvironment().getDefaultScreenDevice();
    } catch (HeadlessException e) {
      throw new IllegalStateException("there is no display", e);
    } catch (AWTError e) {
      throw new IllegalStateException("the display cannot be reached", e);
    }
    EventQueue.invokeLater(() -> open(launch, closeAfterMillis));
  }

  private static void open(Launch launch, int closeAfterMillis) {
    JFrame frame = new JFrame("Hello Quillory");
    // Not EXIT_ON_CLOSE: the launcher's process ends by itself when the last window is gone.
    frame.setDefaultCloseOperation(JFrame.DISPOSE_ON_CLOSE);
    frame.add(new Header(), BorderLayout.NORTH);
    frame.add(scrollable(table(launch)), BorderLayout.CENTER);
    frame.add(newsLine(Updates.get()), BorderLayout.SOUTH);
    frame.setJMenuBar(menu(Updates.get()));
    frame.setSize(SIZE);
    frame.setLocationRelativeTo(null);
    frame.setVisible(true);
    if (closeAfterMillis > 0) {
      Timer timer = new Timer(closeAfterMillis, event -> frame.dispose());
      timer.setRepeats(false);
      timer.start();
    }
  }

  /** Says what there is to be said about updates; a click on a version that is ready restarts. */
  private static JButton newsLine(Updates updates) {
    JButton line = new JButton(UpdateNews.atStart(updates));
    line.setFont(line.getFont().deriveFont(Font.BOLD));
    line.setForeground(HEADER_LEFT);
    line.setBackground(STRIPE);
    line.setBorder(BorderFactory.createEmptyBorder(GAP, MARGIN, GAP, MARGIN));
    line.setHorizontalAlignment(SwingConstants.LEFT);
    line.setFocusPainted(false);
    line.setVisible(!line.getText().isEmpty());
    line.addActionListener(event -> updates.restartToUpdate(() -> true));
    updates.addListener(
        state ->
            EventQueue.invokeLater(
                () -> {
                  line.setText(UpdateNews.of(state, updates.release()));
                  line.setVisible(!line.getText().isEmpty());
                }));
    return line;
  }

  private static JMenuBar menu(Updates updates) {
    JMenuItem check = new JMenuItem("Check for Updates");
    check.addActionListener(event -> updates.download());
    JMenu help = new JMenu("Help");
    help.add(check);
    JMenuBar bar = new JMenuBar();
    bar.add(help);
    return bar;
  }

  private static JTable table(Launch launch) {
    DefaultTableModel model =
        new DefaultTableModel(new Object[] {"What", "Value"}, 0) {
          private static final long serialVersionUID = 1;

          @Override
          public boolean isCellEditable(int row, int column) {
            return false;
          }
        };
    String url = launch.requestedUrl();
    model.addRow(new Object[] {"URL request", url == null ? "none" : url});
    for (int i = 0; i < launch.arguments.size(); i++) {
      model.addRow(new Object[] {"Argument " + (i + 1), launch.arguments.get(i)});
    }
    for (int i = 0; i + 1 < launch.properties.size(); i += 2) {
      model.addRow(new Object[] {launch.properties.get(i), launch.properties.get(i + 1)});
    }
    if (launch.problem != null) {
      model.addRow(new Object[] {"No launch properties", launch.problem});
    }
    JTable table = new JTable(model);
    table.setDefaultRenderer(Object.class, new StripedCells());
    table.setRowHeight(ROW_HEIGHT);
    table.setShowGrid(false);
    table.setIntercellSpacing(new Dimension(0, 0));
    table.setFillsViewportHeight(true);
    table.setTableHeader(null);
    table.getColumnModel().getColumn(0).setPreferredWidth(SIZE.width / 3);
    table.getColumnModel().getColumn(1).setPreferredWidth(SIZE.width * 2 / 3);
    return table;
  }

  private static JScrollPane scrollable(JTable table) {
    JScrollPane pane = new JScrollPane(table);
    pane.setBorder(BorderFactory.createEmptyBorder());
    pane.setHorizontalScrollBarPolicy(ScrollPaneConstants.HORIZONTAL_SCROLLBAR_NEVER);
    return pane;
  }

  /** Every second row on a light ground, and the whole value where the mouse rests. */
  private static final class StripedCells extends DefaultTableCellRenderer {
    private static final long serialVersionUID = 1;

    @Override
    public Component getTableCellRendererComponent(
        JTable table, Object value, boolean isSelected, boolean hasFocus, int row, int column) {
      super.getTableCellRendererComponent(table, value, isSelected, false, row, column);
      if (!isSelected) {
        setBackground(row % 2 == 0 ? Color.WHITE : STRIPE);
      }
      setForeground(INK);
      setFont(getFont().deriveFont(column == 0 ? Font.BOLD : Font.PLAIN));
      int left = column == 0 ? MARGIN : GAP;
      setBorder(BorderFactory.createEmptyBorder(0, left, 0, GAP));
      setToolTipText(String.valueOf(value));
      return this;
    }
  }

  /** The coloured band with the greeting. */
  private static final class Header extends JComponent {
    private static final long serialVersionUID = 1;

    Header() {
      setPreferredSize(new Dimension(SIZE.width, HEADER_HEIGHT));
    }

    @Override
    protected void paintComponent(Graphics graphics) {
      Graphics2D g = (Graphics2D) graphics.create();
      g.setRenderingHint(
          RenderingHints.KEY_TEXT_ANTIALIASING, RenderingHints.VALUE_TEXT_ANTIALIAS_ON);
      g.setPaint(new GradientPaint(0, 0, HEADER_LEFT, getWidth(), 0, HEADER_RIGHT));
      g.fillRect(0, 0, getWidth(), getHeight());
      g.setColor(Color.WHITE);
      g.setFont(new Font(Font.SANS_SERIF, Font.BOLD, 28));
      g.drawString("Hello from Quillory", MARGIN, 48);
      g.setFont(new Font(Font.SANS_SERIF, Font.PLAIN, 14));
      g.drawString(
          "Java " + System.getProperty("java.version") + ", installed and started", MARGIN, 74);
      g.dispose();
    }
  }
}
