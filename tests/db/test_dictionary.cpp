#include "EngineFixture.h"

#include <QRegularExpression>

class TestDictionary final : public QObject {
  Q_OBJECT

  EngineFixture m_fx;
  std::shared_ptr<OraDatabase> m_db;

private Q_SLOTS:
  void initTestCase() {
    m_db = m_fx.sales();
    EngineFixture::run(*m_db, QStringLiteral(FIXTURES "/sales_schema.sql"));
  }

  void tablesViewsAndComments() {
    QCOMPARE(
        rowsOf(*m_db, "select owner, table_name, num_rows from all_tables where owner = 'SALES' order by table_name"),
        QStringList({"SALES|CUSTOMERS|<null>", "SALES|ORDERS|<null>", "SALES|ORDER_LINES|<null>"}));
    QCOMPARE(rowsOf(*m_db, "select table_name from user_tables where iot_type = 'IOT'"), QStringList({"ORDER_LINES"}));
    QCOMPARE(rowsOf(*m_db, "select OWNER, VIEW_NAME from ALL_VIEWS"), QStringList({"SALES|BIG_ORDERS"}));
    QCOMPARE(
        rowsOf(*m_db, "select table_name, table_type, comments from all_tab_comments where owner = 'SALES' order by 1"),
        QStringList({"BIG_ORDERS|VIEW|<null>", "CUSTOMERS|TABLE|顧客マスタ", "ORDERS|TABLE|<null>",
                     "ORDER_LINES|TABLE|<null>"}));
    // One row for every column of every table and view, Null where nobody commented.
    QCOMPARE(rowsOf(*m_db, "select count(*), count(comments) from all_col_comments where owner = 'SALES'"),
             QStringList({"23|2"}));
    QCOMPARE(
        rowsOf(*m_db, "select comments from user_col_comments where table_name = 'ORDERS' and column_name = 'AMOUNT'"),
        QStringList({"Order amount, tax included"}));
    QCOMPARE(rowsOf(*m_db, "select username from all_users order by username"), QStringList({"SALES", "SYSTEM"}));
    // The view works and has the columns it was given.
    QCOMPARE(
        rowsOf(
            *m_db,
            "select column_name, data_type from user_tab_columns where table_name = 'BIG_ORDERS' order by column_id"),
        QStringList({"ORDER_NO|NUMBER", "CUST_NAME|VARCHAR2", "AMOUNT|NUMBER"}));
  }

  void columnsReportOracleTypes() {
    const QStringList rows =
        rowsOf(*m_db, "select table_name, column_name, data_type, data_length, data_precision, data_scale, nullable, "
                      "column_id from all_tab_columns where table_name in ('CUSTOMERS', 'ORDER_LINES') "
                      "order by table_name, column_id");
    QCOMPARE(rows, QStringList({
                       "CUSTOMERS|CUST_NO|NUMBER|22|8|0|N|1",
                       "CUSTOMERS|CUST_NAME|VARCHAR2|40|<null>|<null>|N|2",
                       "CUSTOMERS|KANA_NAME|VARCHAR2|160|<null>|<null>|Y|3",
                       "CUSTOMERS|RANK_CODE|CHAR|1|<null>|<null>|Y|4",
                       "CUSTOMERS|CREDIT|NUMBER|22|<null>|<null>|Y|5",
                       "CUSTOMERS|CREATED_ON|DATE|7|<null>|<null>|Y|6",
                       "CUSTOMERS|NOTE|CLOB|4000|<null>|<null>|Y|7",
                       "ORDER_LINES|ORDER_NO|NUMBER|22|10|0|N|1",
                       "ORDER_LINES|LINE_NO|NUMBER|22|4|0|N|2",
                       "ORDER_LINES|ITEM_CODE|VARCHAR2|20|<null>|<null>|N|3",
                       "ORDER_LINES|QTY|NUMBER|22|<null>|0|Y|4",
                       "ORDER_LINES|UNIT_PRICE|FLOAT|22|126|<null>|Y|5",
                       "ORDER_LINES|PHOTO|BLOB|4000|<null>|<null>|Y|6",
                       "ORDER_LINES|CHECKSUM|RAW|16|<null>|<null>|Y|7",
                       "ORDER_LINES|LEGACY|LONG|0|<null>|<null>|Y|8",
                   }));
    QCOMPARE(rowsOf(*m_db,
                    "select data_precision, data_scale, data_length from user_tab_columns where column_name = 'AMOUNT' "
                    "and table_name = 'ORDERS'"),
             QStringList({"12|2|22"}));
    QCOMPARE(
        rowsOf(
            *m_db,
            "select data_default from user_tab_columns where table_name = 'CUSTOMERS' and column_name = 'RANK_CODE'"),
        QStringList({"'B'"}));
  }

  void constraintsAndIndexes() {
    const QStringList rows =
        rowsOf(*m_db, "select constraint_name, constraint_type, table_name, status, r_constraint_name, generated "
                      "from user_constraints order by table_name, constraint_type, constraint_name");
    const QRegularExpression sysName(QStringLiteral("^SYS_C\\d{7}$"));
    QStringList named;
    int generated = 0;
    for (QString row : rows) {
      const QStringList f = row.split(u'|');
      if (sysName.match(f[0]).hasMatch()) {
        ++generated;
        QCOMPARE(f[5], QString("GENERATED NAME"));
        row = "SYS_C|" + f.mid(1).join(u'|');
      }
      named << row;
    }
    QCOMPARE(named, QStringList({
                        "SYS_C|C|CUSTOMERS|ENABLED|<null>|GENERATED NAME", // NOT NULL cust_name
                        "SYS_C|C|CUSTOMERS|ENABLED|<null>|GENERATED NAME", // CHECK rank_code
                        "CUST_PK|P|CUSTOMERS|ENABLED|<null>|USER NAME",
                        "CUST_NAME_UK|U|CUSTOMERS|ENABLED|<null>|USER NAME",
                        "ORDERS_AMOUNT_CK|C|ORDERS|ENABLED|<null>|USER NAME",
                        "SYS_C|C|ORDERS|ENABLED|<null>|GENERATED NAME",
                        "ORDERS_PK|P|ORDERS|ENABLED|<null>|USER NAME",
                        "ORDERS_CUST_FK|R|ORDERS|ENABLED|CUST_PK|USER NAME",
                        "SYS_C|C|ORDER_LINES|ENABLED|<null>|GENERATED NAME",
                        "SYS_C|P|ORDER_LINES|ENABLED|<null>|GENERATED NAME",
                        "SYS_C|R|ORDER_LINES|ENABLED|ORDERS_PK|GENERATED NAME",
                    }));
    QCOMPARE(generated, 6);
    QCOMPARE(rowsOf(*m_db, "select search_condition from all_constraints where constraint_name = 'ORDERS_AMOUNT_CK'"),
             QStringList({"amount >= 0"}));
    QCOMPARE(
        rowsOf(*m_db,
               "select delete_rule from user_constraints where table_name = 'ORDER_LINES' and constraint_type = 'R'"),
        QStringList({"CASCADE"}));

    // Primary and unique keys have an index of the constraint's name.
    QCOMPARE(
        rowsOf(*m_db,
               "select index_name, table_owner, table_name, column_name, column_position, column_length, descend "
               "from all_ind_columns where table_name in ('CUSTOMERS', 'ORDERS') order by index_name, column_position"),
        QStringList({"CUST_NAME_UK|SALES|CUSTOMERS|CUST_NAME|1|40|ASC", "CUST_PK|SALES|CUSTOMERS|CUST_NO|1|22|ASC",
                     "ORDERS_DATE_IX|SALES|ORDERS|SYS_NC00006$|1|7|DESC", "ORDERS_DATE_IX|SALES|ORDERS|STATUS|2|10|ASC",
                     "ORDERS_PK|SALES|ORDERS|ORDER_NO|1|22|ASC"}));
    const QStringList lines =
        rowsOf(*m_db, "select i.index_name, i.column_name from user_ind_columns i, user_constraints c "
                      "where c.constraint_name = i.index_name and c.table_name = 'ORDER_LINES' "
                      "order by i.column_position");
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines[0].endsWith("|ORDER_NO") && lines[1].endsWith("|LINE_NO"));
  }

  void otherOwnersAreVisibleToAll() {
    auto system = m_fx.open("SYSTEM", "manager");
    QCOMPARE(rowsOf(*system, "select count(*) from all_tab_columns where owner = 'SALES' and table_name = 'ORDERS'"),
             QStringList({"5"}));
    QCOMPARE(rowsOf(*system, "select count(*) from user_tables"), QStringList({"0"}));
    system->ExecuteSQL("insert into sales.customers (cust_no, cust_name) values (900, 'from system')");
    QCOMPARE(rowsOf(*system, "select cust_name from sales.customers where cust_no = 900"),
             QStringList({"from system"}));
    QCOMPARE(rowsOf(*m_db, "select count(*) from customers where cust_no = 900"), QStringList({"1"}));
    m_db->ExecuteSQL("delete from customers where cust_no = 900");
  }

  // Every kind of object, the index of an index-organized table, privileges, the instance.
  void objectsPrivilegesAndInstance() {
    QCOMPARE(rowsOf(*m_db, "select object_type, count(*) from user_objects group by object_type order by 1"),
             QStringList({"INDEX|5", "SEQUENCE|1", "TABLE|3", "VIEW|1"}));
    QCOMPARE(rowsOf(*m_db, "select count(distinct object_id), count(*) from all_objects"), QStringList({"10|10"}));
    QCOMPARE(rowsOf(*m_db, "select index_type, uniqueness, generated from user_indexes where table_name = "
                           "'ORDER_LINES'"),
             QStringList({"IOT - TOP|UNIQUE|Y"}));
    QCOMPARE(rowsOf(*m_db, "select index_name, index_type, uniqueness from user_indexes where table_name = 'ORDERS' "
                           "order by 1"),
             QStringList({"ORDERS_DATE_IX|FUNCTION-BASED NORMAL|NONUNIQUE", "ORDERS_PK|NORMAL|UNIQUE"}));
    auto system = m_fx.open("SYSTEM", "manager");
    m_db->ExecuteSQL("grant select on orders to system");
    QCOMPARE(rowsOf(*m_db, "select grantee, owner, table_name, grantor, privilege, type from user_tab_privs"),
             QStringList({"SYSTEM|SALES|ORDERS|SALES|SELECT|TABLE"}));
    QCOMPARE(rowsOf(*system, "select table_schema, table_name from all_tab_privs where grantee = 'SYSTEM'"),
             QStringList({"SALES|ORDERS"}));
    QCOMPARE(rowsOf(*system, "select username, account_status, default_tablespace from dba_users order by 1"),
             QStringList({"SALES|OPEN|USERS", "SYSTEM|OPEN|USERS"}));
    QCOMPARE(errorOf([&] { rowsOf(*m_db, "select count(*) from dba_users"); }), 942);
    QCOMPARE(rowsOf(*m_db, "select count(*) from v$version where banner like 'Oracle Database 19c%'"),
             QStringList({"1"}));
    QCOMPARE(rowsOf(*m_db, "select name, open_mode from v$database"), QStringList({"INST|READ WRITE"}));
    m_db->ExecuteSQL("alter session set nls_date_format = 'DD-MON-RR'");
    QCOMPARE(rowsOf(*m_db, "select value from nls_session_parameters where parameter = 'NLS_DATE_FORMAT'"),
             QStringList({"DD-MON-RR"}));
  }
  // Unique, composite, descending and function-based indexes: an expression, and a descending
  // column too, is indexed as a hidden column numbered after the table's.
  void indexForms() {
    const auto exec = [&](const char* sql) { return errorOf([&] { m_db->ExecuteSQL(sql); }); };
    QCOMPARE(exec("create table staff (id number, name varchar2(20), dept number)"), 0);
    QCOMPARE(exec("create unique index staff_name_ux on staff (upper(name))"), 0);
    QCOMPARE(exec("create index staff_dept_ix on staff (dept desc, id)"), 0);
    QCOMPARE(exec("create unique index staff_id_ux on staff (id, dept)"), 0);
    QCOMPARE(rowsOf(*m_db, "select index_name, index_type, uniqueness from user_indexes where table_name = 'STAFF' "
                           "order by 1"),
             QStringList({"STAFF_DEPT_IX|FUNCTION-BASED NORMAL|NONUNIQUE", "STAFF_ID_UX|NORMAL|UNIQUE",
                          "STAFF_NAME_UX|FUNCTION-BASED NORMAL|UNIQUE"}));
    QCOMPARE(rowsOf(*m_db, "select index_name, column_name, column_position, descend from user_ind_columns where "
                           "table_name = 'STAFF' order by 1, 3"),
             QStringList({"STAFF_DEPT_IX|SYS_NC00005$|1|DESC", "STAFF_DEPT_IX|ID|2|ASC", "STAFF_ID_UX|ID|1|ASC",
                          "STAFF_ID_UX|DEPT|2|ASC", "STAFF_NAME_UX|SYS_NC00004$|1|ASC"}));
    QCOMPARE(rowsOf(*m_db, "select index_owner, index_name, table_owner, table_name, column_expression, "
                           "column_position from all_ind_expressions where table_name = 'STAFF' order by 2"),
             QStringList(
                 {"SALES|STAFF_DEPT_IX|SALES|STAFF|\"DEPT\"|1", "SALES|STAFF_NAME_UX|SALES|STAFF|UPPER(\"NAME\")|1"}));
    // The expression is what is unique, through DML and a rebuild of the table alike.
    QCOMPARE(exec("insert into staff values (1, 'Ann', 10)"), 0);
    QString text;
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("insert into staff values (2, 'ANN', 20)"); }, &text), 1);
    QCOMPARE(text, QString("ORA-00001: unique constraint (SALES.STAFF_NAME_UX) violated"));
    QCOMPARE(exec("insert into staff values (2, 'Bob', 20)"), 0);
    QCOMPARE(rowsOf(*m_db, "select id from staff where upper(name) = 'BOB' order by dept desc"), QStringList({"2"}));
    QCOMPARE(exec("create index staff_again on staff (upper(name))"), 1408);
    QCOMPARE(exec("create index staff_now on staff (sysdate - dept)"), 1743);
    QCOMPARE(exec("create index staff_sub on staff ((select 1 from dual))"), 22818);
    QCOMPARE(exec("alter table staff rename column name to full_name"), 0);
    QCOMPARE(rowsOf(*m_db, "select column_expression from user_ind_expressions where index_name = 'STAFF_NAME_UX'"),
             QStringList({"UPPER(\"FULL_NAME\")"}));
    QCOMPARE(exec("update staff set full_name = 'ann' where id = 2"), 1);
    QCOMPARE(exec("drop index staff_name_ux"), 0);
    QCOMPARE(rowsOf(*m_db, "select count(*) from user_ind_expressions"), QStringList({"2"}));
    QCOMPARE(exec("drop table staff"), 0);
    QCOMPARE(rowsOf(*m_db, "select count(*) from user_ind_expressions"), QStringList({"1"}));
  }
};

QTEST_GUILESS_MAIN(TestDictionary)
#include "test_dictionary.moc"
