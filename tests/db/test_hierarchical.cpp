#include "EngineFixture.h"

// Hierarchical queries: the rows of a tree depth first from its roots, LEVEL and the tree's
// functions, sibling order, loops in the data, and CONNECT BY LEVEL as a row generator.
class TestHierarchical final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table staff (id number primary key, boss number, name varchar2(10), dept number)");
    // Inserted out of tree order, so that the order of the rows comes from the walk.
    for (const char* row : {"4, 2, 'Dora', 20", "1, null, 'Ada', 10", "3, 1, 'Cy', 20", "2, 1, 'Bo', 20",
                            "5, 3, 'Eve', 10", "6, 2, 'Al', 20"})
      m_db->ExecuteSQL(QString("insert into staff values (%1)").arg(row));
    m_db->ExecuteSQL("create table ring (id number, parent number)");
    for (const char* row : {"1, 3", "2, 1", "3, 2"})
      m_db->ExecuteSQL(QString("insert into ring values (%1)").arg(row));
  }
  void cleanupTestCase() { closeSales(); }

  void walksTheTreeDepthFirst() {
    const QString walk = "select name, level from staff start with boss is null connect by prior id = boss";
    const QStringList tree = rows(walk);
    QCOMPARE(tree.size(), 6);
    QCOMPARE(tree.first(), "Ada|1");
    // Every row follows its parent, and a subtree is not interrupted by another.
    QStringList underBo = tree.mid(tree.indexOf("Bo|2") + 1, 2);
    underBo.sort();
    QCOMPARE(underBo, QStringList({"Al|3", "Dora|3"}));
    QCOMPARE(tree.at(tree.indexOf("Cy|2") + 1), "Eve|3");
    QCOMPARE(rows(walk + " order siblings by name"), QStringList({"Ada|1", "Bo|2", "Al|3", "Dora|3", "Cy|2", "Eve|3"}));
    QCOMPARE(rows(walk + " order siblings by name desc"),
             QStringList({"Ada|1", "Cy|2", "Eve|3", "Bo|2", "Dora|3", "Al|3"}));
    // WHERE filters the rows after the walk; a row it drops keeps its children.
    QCOMPARE(rows("select name from staff where dept = 10 start with id = 1 connect by prior id = boss order by name"),
             QStringList({"Ada", "Eve"}));
    QCOMPARE(rows("select name from staff start with name = 'Bo' connect by prior id = boss and level <= 2 "
                  "order by name"),
             QStringList({"Al", "Bo", "Dora"}));
    // START WITH may follow CONNECT BY; a plain ORDER BY sorts the walked rows.
    QCOMPARE(rows("select count(*), max(level) from staff connect by prior id = boss start with id = 1"),
             QStringList({"6|3"}));
    QCOMPARE(rows("select name from staff start with id = 2 connect by boss = prior id order by name desc"),
             QStringList({"Dora", "Bo", "Al"}));
  }

  void treeFunctions() {
    QCOMPARE(rows("select sys_connect_by_path(name, '/') path, connect_by_root name, prior name, connect_by_isleaf "
                  "from staff s start with boss is null connect by prior s.id = s.boss order siblings by name"),
             QStringList({"/Ada|Ada|<null>|0", "/Ada/Bo|Ada|Ada|0", "/Ada/Bo/Al|Ada|Bo|1", "/Ada/Bo/Dora|Ada|Bo|1",
                          "/Ada/Cy|Ada|Ada|0", "/Ada/Cy/Eve|Ada|Cy|1"}));
    // A NULL value adds only the separator; a number joins as TO_CHAR prints it.
    QCOMPARE(rows("select sys_connect_by_path(nullif(name, 'Bo'), '/'), sys_connect_by_path(id / 2, ';') from staff "
                  "start with id = 1 connect by prior id = boss and id <> 3 order siblings by id"),
             QStringList({"/Ada|;.5", "/Ada/|;.5;1", "/Ada//Dora|;.5;1;2", "/Ada//Al|;.5;1;3"}));
    // Oracle's labels: the source upper case without blanks.
    auto d = m_db->CreateDynaset(
        "select connect_by_root name, sys_connect_by_path(name, '-'), level from staff connect by prior id = boss", 4);
    QCOMPARE(d->FieldName(0), "CONNECT_BY_ROOTNAME");
    QCOMPARE(d->FieldName(1), "SYS_CONNECT_BY_PATH(NAME,'-')");
    QCOMPARE(d->FieldName(2), "LEVEL");
    // Without START WITH every row is a root.
    QCOMPARE(rows("select count(*) from staff connect by prior id = boss"), QStringList({"14"}));
    // From a subquery, or as a subquery.
    QCOMPARE(rows("select x.name from (select id, boss, name from staff where dept = 20) x start with boss = 1 "
                  "connect by prior id = boss order siblings by name"),
             QStringList({"Bo", "Al", "Dora", "Cy"}));
    QCOMPARE(rows("select name from staff where id in (select id from staff start with id = 3 connect by prior id = "
                  "boss) order by 1"),
             QStringList({"Cy", "Eve"}));
  }

  void loopsInTheData() {
    QCOMPARE(errorOf([&] { rows("select id from ring start with id = 1 connect by prior id = parent"); }), 1436);
    QCOMPARE(rows("select id, level, connect_by_iscycle from ring start with id = 1 connect by nocycle prior id = "
                  "parent"),
             QStringList({"1|1|0", "2|2|0", "3|3|1"}));
    // With ORDER SIBLINGS BY the walk numbers the rows first, and finds the loop by those numbers.
    QCOMPARE(rows("select id, connect_by_iscycle from ring start with id = 2 connect by nocycle prior id = parent "
                  "order siblings by id"),
             QStringList({"2|0", "3|0", "1|1"}));
    QCOMPARE(errorOf([&] {
               rows("select id from ring start with id = 2 connect by prior id = parent order siblings by id");
             }),
             1436);
    // The walk finds the loop before WHERE looks at the rows, even when WHERE drops them all.
    QCOMPARE(errorOf([&] { rows("select id from ring where id > 5 start with id = 1 connect by prior id = parent"); }),
             1436);
    QCOMPARE(errorOf([&] { rows("select connect_by_iscycle from ring connect by prior id = parent"); }), 30930);
    // A join before the walk is refused, not walked wrongly.
    QCOMPARE(errorOf([&] { rows("select 1 from staff a, ring b connect by prior a.id = a.boss"); }), 3001);
  }

  void levelGeneratesRows() {
    QCOMPARE(rows("select level, connect_by_isleaf from dual connect by level <= 3"),
             QStringList({"1|0", "2|0", "3|1"}));
    QCOMPARE(rows("select sum(level) from dual connect by level <= 100"), QStringList({"5050"}));
    QCOMPARE(rows("select to_char(date '2024-01-30' + level - 1, 'MM/DD') from dual connect by level <= 3"),
             QStringList({"01/30", "01/31", "02/01"}));
  }
};

QTEST_GUILESS_MAIN(TestHierarchical)
#include "test_hierarchical.moc"
