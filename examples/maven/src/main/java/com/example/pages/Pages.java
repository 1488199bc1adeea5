package com.example.pages;

import java.awt.BorderLayout;
import java.awt.Dimension;
import java.awt.EventQueue;
import javax.swing.JFrame;
import javax.swing.JMenu;
import javax.swing.JMenuBar;
import javax.swing.JScrollPane;
import javax.swing.JTextArea;
import org.apache.commons.lang3.StringUtils;

/** A window that says which files it was asked to show, and in which module it is. */
public final class Pages {
  private Pages() {}

  public static void main(String[] arguments) {
    EventQueue.invokeLater(() -> show(arguments));
  }

  private static void show(String[] files) {
    String module = String.valueOf(Pages.class.getModule().getName());
    JTextArea text = new JTextArea(StringUtils.join(files, '\n') + "\n\nmodule " + module + "\n");
    JMenu menu = new JMenu("File");
    menu.add("New");
    menu.add("Open ...");
    menu.add("Save").setEnabled(false);
    menu.addSeparator();
    menu.add("Close").addActionListener(event -> System.exit(0));
    JMenuBar bar = new JMenuBar();
    bar.add(menu);
    JFrame frame = new JFrame("Pages of " + module + ": " + StringUtils.join(files, ", "));
    frame.setJMenuBar(bar);
    frame.add(new JScrollPane(text), BorderLayout.CENTER);
    frame.setMinimumSize(new Dimension(480, 320));
    frame.setDefaultCloseOperation(JFrame.EXIT_ON_CLOSE);
    frame.pack();
    frame.setLocationRelativeTo(null);
    frame.setVisible(true);
  }
}
