#include "widgets/FlexGrid.h"
#include "widgets/Twips.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

namespace {

QStringList column(const FlexGrid& g, int col) {
  QStringList out;
  for (int r = g.FixedRows(); r < g.Rows(); ++r)
    out << g.TextMatrix(r, col);
  return out;
}

void fill(FlexGrid& g, const QList<QStringList>& rows) {
  g.setRows(int(rows.size()) + 1);
  for (int r = 0; r < rows.size(); ++r)
    for (int c = 0; c < rows[r].size(); ++c)
      g.setTextMatrix(r + 1, c, rows[r][c]);
}

QPoint headingCenter(FlexGrid& g, int col) {
  const QHeaderView* h = g.horizontalHeader();
  return QPoint(h->sectionViewportPosition(col) + h->sectionSize(col) / 2, h->height() / 2);
}

QPoint cellCenter(FlexGrid& g, int row, int col) { return g.visualRect(g.gridModel()->index(row - 1, col)).center(); }

} // namespace

class TestFlexGrid final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void rowsCountTheHeaderAndCellsKeepTheirText() {
    FlexGrid g;
    g.setCols(3);
    g.setRows(4);
    QCOMPARE(g.model()->rowCount(), 3);
    QCOMPARE(g.model()->columnCount(), 3);
    g.setTextMatrix(0, 1, "ﾃｰﾌﾞﾙ");
    QCOMPARE(g.model()->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), QString("ﾃｰﾌﾞﾙ"));
    // Cells written in any order, then rewritten shorter and longer, keep their neighbours intact.
    const int order[][2] = {{2, 2}, {1, 0}, {2, 0}, {1, 2}, {3, 1}, {1, 1}, {2, 1}};
    for (const auto& rc : order)
      g.setTextMatrix(rc[0], rc[1], QStringLiteral("r%1c%2").arg(rc[0]).arg(rc[1]));
    g.setTextMatrix(1, 1, "");
    g.setTextMatrix(2, 0, "a much longer text than before");
    QCOMPARE(g.TextMatrix(1, 0), QString("r1c0"));
    QCOMPARE(g.TextMatrix(1, 1), QString());
    QCOMPARE(g.TextMatrix(1, 2), QString("r1c2"));
    QCOMPARE(g.TextMatrix(2, 0), QString("a much longer text than before"));
    QCOMPARE(g.TextMatrix(2, 1), QString("r2c1"));
    QCOMPARE(g.TextMatrix(2, 2), QString("r2c2"));
    QCOMPARE(g.model()->data(g.model()->index(1, 2)).toString(), QString("r2c2"));
    // Outside the grid: nothing read, nothing written.
    g.setTextMatrix(9, 0, "x");
    QCOMPARE(g.TextMatrix(9, 0), QString());
    QCOMPARE(g.TextMatrix(1, -1), QString());

    g.setCols(2);
    QCOMPARE(g.TextMatrix(1, 1), QString());
    QCOMPARE(g.TextMatrix(2, 1), QString("r2c1"));
    QCOMPARE(g.TextMatrix(1, 2), QString());
    g.setCols(3);
    QCOMPARE(g.TextMatrix(1, 2), QString());
    g.setRows(2);
    g.setRows(4);
    QCOMPARE(g.TextMatrix(3, 1), QString());
    QCOMPARE(g.TextMatrix(1, 0), QString("r1c0"));
    g.setRows(0); // never below the header row
    QCOMPARE(g.Rows(), 1);
    QCOMPARE(g.model()->rowCount(), 0);
    QCOMPARE(g.TextMatrix(0, 1), QString("ﾃｰﾌﾞﾙ"));

    FlexGrid noHeader;
    noHeader.setFixedRows(0);
    noHeader.setRows(2);
    noHeader.setTextMatrix(0, 0, "first");
    QCOMPARE(noHeader.model()->rowCount(), 2);
    QCOMPARE(noHeader.model()->data(noHeader.model()->index(0, 0)).toString(), QString("first"));
    QVERIFY(noHeader.horizontalHeader()->isHidden());
  }

  void coloursAlignmentAndWidthsShow() {
    FlexGrid g;
    g.resize(400, 200);
    g.setCols(2);
    fill(g, {{"1,234", "abc"}, {"x", "-5.5"}});
    g.setColWidth(0, 1500);
    QCOMPARE(g.ColWidth(0), 1500);
    QCOMPARE(g.columnWidth(0), twipsToPixelsX(&g, 1500));
    g.setCellBackColor(2, 1, QColor(0, 255, 0));
    g.setCellForeColor(1, 1, Qt::red);
    g.show();
    QVERIFY(QTest::qWaitForWindowExposed(&g));
    QCoreApplication::processEvents();
    g.setRow(1); // keep the coloured cell out of the selection highlight
    const QRect cell = g.visualRect(g.gridModel()->index(1, 1));
    const QImage shot = g.viewport()->grab().toImage();
    QCOMPARE(shot.pixelColor(cell.left() + 2, cell.top() + 2), QColor(0, 255, 0));
    QVERIFY(shot.pixelColor(g.visualRect(g.gridModel()->index(1, 0)).topLeft() + QPoint(2, 2)) != QColor(0, 255, 0));
    QCOMPARE(g.model()->data(g.model()->index(0, 1), Qt::ForegroundRole).value<QBrush>().color(), QColor(Qt::red));

    const auto align = [&](int r, int c) {
      return Qt::Alignment(g.model()->data(g.model()->index(r - 1, c), Qt::TextAlignmentRole).toInt());
    };
    QCOMPARE(align(1, 0) & Qt::AlignHorizontal_Mask, Qt::AlignRight); // numbers right
    QCOMPARE(align(1, 1) & Qt::AlignHorizontal_Mask, Qt::AlignLeft);  // text left
    QCOMPARE(align(2, 1) & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    g.setColAlignment(1, Qt::AlignHCenter);
    QCOMPARE(align(1, 1) & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    g.setCellAlignment(1, 1, Qt::AlignRight);
    QCOMPARE(align(1, 1) & Qt::AlignHorizontal_Mask, Qt::AlignRight);

    g.Clear();
    QCOMPARE(g.TextMatrix(1, 0), QString());
    QVERIFY(!g.CellBackColor(2, 1).isValid());
    QCOMPARE(g.Rows(), 3);
  }

  void selectionFollowsClicksAndHeadings() {
    FlexGrid g;
    g.resize(500, 300);
    g.setCols(3);
    fill(g, {{"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}, {"j", "k", "l"}});
    g.show();
    QVERIFY(QTest::qWaitForWindowExposed(&g));
    QSignalSpy clicks(&g, &FlexGrid::Click);
    QSignalSpy doubles(&g, &FlexGrid::DblClick);

    g.setRow(3);
    g.setCol(2);
    QCOMPARE(g.Text(), QString("i"));
    QCOMPARE(g.RowSel(), 3);
    QCOMPARE(g.ColSel(), 2);

    QTest::mouseClick(g.viewport(), Qt::LeftButton, {}, cellCenter(g, 2, 1));
    QCOMPARE(g.Row(), 2);
    QCOMPARE(g.Col(), 1);
    QCOMPARE(clicks.count(), 1);
    QTest::mouseClick(g.viewport(), Qt::LeftButton, Qt::ShiftModifier, cellCenter(g, 4, 2));
    QCOMPARE(g.Row(), 2); // the start of the range stays the current cell
    QCOMPARE(g.Col(), 1);
    QCOMPARE(g.RowSel(), 4);
    QCOMPARE(g.ColSel(), 2);

    QTest::mouseClick(g.horizontalHeader()->viewport(), Qt::LeftButton, {}, headingCenter(g, 1));
    QCOMPARE(g.Row(), 1);
    QCOMPARE(g.RowSel(), 4);
    QCOMPARE(g.Col(), 1);
    QCOMPARE(g.ColSel(), 1);
    QTest::mouseClick(g.horizontalHeader()->viewport(), Qt::LeftButton, Qt::ShiftModifier, headingCenter(g, 2));
    QCOMPARE(g.Col(), 1);
    QCOMPARE(g.ColSel(), 2);
    QVERIFY(g.selectionModel()->isSelected(g.gridModel()->index(3, 2)));

    QTest::mouseDClick(g.viewport(), Qt::LeftButton, {}, cellCenter(g, 3, 0));
    QCOMPARE(doubles.count(), 1);
    QCOMPARE(g.MouseRow(), 3);
    QCOMPARE(g.MouseCol(), 0);
    // A right click reports where it was and leaves the selection alone.
    QSignalSpy downs(&g, &FlexGrid::MouseDown);
    QTest::mouseClick(g.viewport(), Qt::RightButton, {}, cellCenter(g, 1, 2));
    QCOMPARE(downs.count(), 1);
    QCOMPARE(downs[0][0].value<Qt::MouseButton>(), Qt::RightButton);
    QCOMPARE(g.Row(), 3);
    QCOMPARE(g.MouseRow(), 1);
  }

  void sortsSelectedColumnsDetectingNumbers() {
    FlexGrid g;
    g.setCols(3);
    fill(g, {{"1", "10", "z"},
             {"2", "9", "y"},
             {"3", "abc", "x"},
             {"4", "1,000", "w"},
             {"5", "", "v"},
             {"6", "Abc", "u"},
             {"7", "9", "t"}});
    g.setCellBackColor(3, 2, Qt::yellow);
    g.setRow(1);
    g.setCol(1);
    g.setRowSel(g.Rows() - 1);
    g.Sort(FlexGrid::SortOrder::GenericAscending);
    // Numbers by value first (equal ones keep their order), then text by character code.
    QCOMPARE(column(g, 1), QStringList({"9", "9", "10", "1,000", "", "Abc", "abc"}));
    QCOMPARE(column(g, 0), QStringList({"2", "7", "1", "4", "5", "6", "3"}));
    // Whole rows move, colours with them.
    QCOMPARE(g.CellBackColor(7, 2), QColor(Qt::yellow));
    g.Sort(FlexGrid::SortOrder::GenericDescending);
    QCOMPARE(column(g, 1), QStringList({"abc", "Abc", "", "1,000", "10", "9", "9"}));

    // Restore: sort by the row-number column alone.
    g.setCol(0);
    g.Sort(FlexGrid::SortOrder::GenericAscending);
    QCOMPARE(column(g, 0), QStringList({"1", "2", "3", "4", "5", "6", "7"}));

    // Two key columns, only rows 2..4.
    FlexGrid two;
    two.setCols(2);
    fill(two, {{"b", "2"}, {"b", "1"}, {"a", "3"}, {"a", "1"}, {"0", "0"}});
    two.setRow(2);
    two.setCol(0);
    two.setRowSel(4);
    two.setColSel(1);
    two.Sort(FlexGrid::SortOrder::GenericAscending);
    QCOMPARE(column(two, 0), QStringList({"b", "a", "a", "b", "0"}));
    QCOMPARE(column(two, 1), QStringList({"2", "1", "3", "1", "0"}));
  }

  void scrollsByPageAndToTheEnds() {
    FlexGrid g;
    g.resize(300, 200);
    g.setRows(1001);
    for (int r = 1; r < 1001; ++r)
      g.setTextMatrix(r, 0, QString::number(r));
    g.show();
    QVERIFY(QTest::qWaitForWindowExposed(&g));
    QScrollBar* bar = g.verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    g.Scroll(ScrollMove::Bottom);
    QCOMPARE(bar->value(), bar->maximum());
    g.Scroll(ScrollMove::Top);
    QCOMPARE(bar->value(), 0);
    g.Scroll(ScrollMove::PageDown);
    QCOMPARE(bar->value(), bar->pageStep());
    g.Scroll(ScrollMove::PageDown);
    g.Scroll(ScrollMove::PageUp);
    QCOMPARE(bar->value(), bar->pageStep());
  }
};

QTEST_MAIN(TestFlexGrid)
#include "test_flexgrid.moc"
