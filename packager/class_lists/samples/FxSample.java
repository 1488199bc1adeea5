import javafx.animation.PauseTransition;
import javafx.application.Application;
import javafx.scene.Scene;
import javafx.scene.control.Button;
import javafx.scene.control.CheckBox;
import javafx.scene.control.ComboBox;
import javafx.scene.control.Label;
import javafx.scene.control.ListView;
import javafx.scene.control.Menu;
import javafx.scene.control.MenuBar;
import javafx.scene.control.MenuItem;
import javafx.scene.control.SplitPane;
import javafx.scene.control.Tab;
import javafx.scene.control.TabPane;
import javafx.scene.control.TableColumn;
import javafx.scene.control.TableView;
import javafx.scene.control.TextArea;
import javafx.scene.control.TextField;
import javafx.scene.control.ToolBar;
import javafx.scene.layout.BorderPane;
import javafx.scene.layout.VBox;
import javafx.stage.Stage;
import javafx.util.Duration;

/** A window with what most of JavaFX's applications show first, which closes itself. */
public final class FxSample extends Application {
  public static void main(String[] args) {
    launch(args);
  }

  @Override
  public void start(Stage stage) {
    BorderPane root = new BorderPane();
    root.setTop(new VBox(menus(), new ToolBar(new Button("New"), new TextField("Find"))));
    root.setCenter(content());
    root.setBottom(new Label("Ready"));
    stage.setTitle("JavaFX sample");
    stage.setScene(new Scene(root, 800, 600));
    stage.show();
    PauseTransition end = new PauseTransition(Duration.seconds(2));
    end.setOnFinished(event -> stage.close());
    end.play();
  }

  private static MenuBar menus() {
    MenuItem open = new MenuItem("Open...");
    open.setOnAction(event -> {});
    return new MenuBar(new Menu("File", null, open), new Menu("Help"));
  }

  private static SplitPane content() {
    ListView<String> list = new ListView<>();
    list.getItems().addAll("one", "two");
    TableView<String> table = new TableView<>();
    table.getColumns().add(new TableColumn<>("Name"));
    ComboBox<String> choice = new ComboBox<>();
    choice.getItems().addAll("All", "None");
    TabPane tabs =
        new TabPane(
            new Tab("Text", new TextArea("Text of\na few lines.")),
            new Tab("Table", table),
            new Tab("Options", new VBox(new CheckBox("Show hidden files"), choice)));
    return new SplitPane(list, tabs);
  }
}
