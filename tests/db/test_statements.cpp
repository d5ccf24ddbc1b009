#include "EngineFixture.h"

#include "db/NullToValue.h"

class TestStatements final : public QObject, SalesSession {
  Q_OBJECT

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }
  int error(const QString& sql, QString* text = nullptr) {
    return errorOf([&] { m_db->ExecuteSQL(sql); }, text);
  }

private Q_SLOTS:
  void init() {
    openSales();
    EngineFixture::run(*m_db, QStringLiteral(FIXTURES "/sales_schema.sql"));
    exec("insert into customers (cust_no, cust_name, rank_code) values (1, '山田商店', 'A')");
    exec("insert into customers (cust_no, cust_name) values (2, 'Suzuki Ltd')");
    exec("insert into orders values (10, 1, sysdate, 1500, 'OPEN')");
    exec("insert into orders values (11, 1, null, 20.5, 'DONE')");
    exec("insert into order_lines (order_no, line_no, item_code, qty) values (10, 1, 'X-1', 3)");
    exec("insert into order_lines (order_no, line_no, item_code, qty) values (10, 2, 'X-2', 1)");
  }
  void cleanup() {
    closeSales();
  }

  void constraintsRaiseOraclesErrors() {
    QString text;
    QCOMPARE(error("insert into customers (cust_no, cust_name) values (1, 'dup')", &text), 1);
    QCOMPARE(text, QString("ORA-00001: unique constraint (SALES.CUST_PK) violated"));
    QCOMPARE(error("insert into customers (cust_no, cust_name) values (3, 'Suzuki Ltd')", &text), 1);
    QCOMPARE(text, QString("ORA-00001: unique constraint (SALES.CUST_NAME_UK) violated"));
    QCOMPARE(error("insert into customers (cust_no) values (4)", &text), 1400);
    QCOMPARE(text, QString("ORA-01400: cannot insert NULL into (\"SALES\".\"CUSTOMERS\".\"CUST_NAME\")"));
    // '' is Null, as in Oracle.
    QCOMPARE(error("insert into customers (cust_no, cust_name) values (4, '')"), 1400);
    QCOMPARE(error("update customers set cust_name = null where cust_no = 1", &text), 1407);
    QCOMPARE(error("insert into order_lines (order_no, item_code) values (10, 'x')"), 1400); // part of the key
    QCOMPARE(error("update customers set rank_code = 'Z' where cust_no = 2", &text), 2290);
    QVERIFY(text.startsWith("ORA-02290: check constraint (SALES.SYS_C"));
    QCOMPARE(error("insert into orders values (12, 2, null, -1, null)", &text), 2290);
    QCOMPARE(text, QString("ORA-02290: check constraint (SALES.ORDERS_AMOUNT_CK) violated"));
    QCOMPARE(error("insert into orders values (12, 99, null, 1, null)", &text), 2291);
    QCOMPARE(text, QString("ORA-02291: integrity constraint (SALES.ORDERS_CUST_FK) violated - parent key not found"));
    QCOMPARE(error("delete from customers where cust_no = 1", &text), 2292);
    QCOMPARE(text, QString("ORA-02292: integrity constraint (SALES.ORDERS_CUST_FK) violated - child record found"));
    // Nothing of the failed statements stayed.
    QCOMPARE(rows("select count(*) from customers"), QStringList({"2"}));
    // ON DELETE CASCADE removes the lines with their order.
    QCOMPARE(m_db->ExecuteSQL("delete orders where order_no = 10"), qint64(1));
    QCOMPARE(rows("select count(*) from order_lines"), QStringList({"0"}));
    // A disabled constraint stops checking; enabling it checks the rows already there.
    exec("alter table orders disable constraint orders_amount_ck");
    exec("insert into orders values (13, 2, null, -5, null)");
    QCOMPARE(rows("select status from user_constraints where constraint_name = 'ORDERS_AMOUNT_CK'"),
             QStringList({"DISABLED"}));
    QCOMPARE(error("alter table orders enable constraint orders_amount_ck", &text), 2293);
    QCOMPARE(text, QString("ORA-02293: cannot validate (SALES.ORDERS_AMOUNT_CK) - check constraint violated"));
    exec("delete from orders where order_no = 13");
    exec("alter table orders enable constraint orders_amount_ck");
    QCOMPARE(error("insert into orders values (13, 2, null, -5, null)"), 2290);
    QCOMPARE(error("alter table customers disable constraint cust_pk"), 2297);
    QCOMPARE(error("alter table customers add constraint cust_credit_ck check (credit > 0)"), 0);
    QCOMPARE(error("alter table orders add constraint orders_status_uk unique (status)"), 0);
    QCOMPARE(error("insert into orders values (14, 2, null, 1, 'DONE')", &text), 1);
    QCOMPARE(text, QString("ORA-00001: unique constraint (SALES.ORDERS_STATUS_UK) violated"));
  }

  void statementErrorsUseOraclesNumbers() {
    QString text;
    QCOMPARE(error("select * from nowhere"), 942);
    QCOMPARE(errorOf([&] { m_db->CreateDynaset("select * from nowhere", 4); }, &text), 942);
    QCOMPARE(text, QString("ORA-00942: table or view does not exist"));
    QCOMPARE(errorOf([&] { m_db->CreateDynaset("select bogus from customers", 4); }, &text), 904);
    QCOMPARE(text, QString("ORA-00904: \"BOGUS\": invalid identifier"));
    QCOMPARE(error("frobnicate the table"), 900);
    QCOMPARE(error("select cust_no from customers where"), 921);
    QCOMPARE(error("insert into customers (cust_no, cust_name) values (5, 'x', 1)"), 913);
    QCOMPARE(error("insert into customers (cust_no, cust_name) values (5)"), 947);
    QCOMPARE(error("delete from customers where cust_name = 'x';"), 911);
    QCOMPARE(error("select 'unterminated from dual"), 1756);
    QCOMPARE(error("create table customers (x number)"), 955);
    QCOMPARE(error("create table t (x numbr)"), 902);
    QCOMPARE(error("create table t (x number, x date)"), 957);
    QCOMPARE(error("drop table nowhere"), 942);
    QCOMPARE(error("drop index nowhere"), 1418);
    QCOMPARE(error("drop index cust_pk"), 2429);
    QCOMPARE(error("create user hacker identified by x"), 1031);
    QCOMPARE(error("alter system kill session '1,1'"), 1031);
    QCOMPARE(error("comment on column customers.nothing is 'x'"), 904);
    QCOMPARE(error("create index orders_again on orders (order_date desc, status)"), 1408);
    QCOMPARE(error("create unique index orders_stat_ux on orders (status)"), 0);
    QCOMPARE(error("insert into orders values (12, 2, null, 1, 'OPEN')", &text), 1);
    QCOMPARE(text, QString("ORA-00001: unique constraint (SALES.ORDERS_STAT_UX) violated"));
    QCOMPARE(error("alter session set nls_date_format = 'YYYY-MM-DD'"), 0);
    QCOMPARE(error("begin insert into customers (cust_no, cust_name) values (7, 'a'); "
                   "update customers set credit = 1 where cust_no = 7; end;"),
             0);
    QCOMPARE(rows("select credit from customers where cust_no = 7"), QStringList({"1"}));
    QCOMPARE(error("begin x := 1; end;"), 6550);
  }

  void sequencesAndQueriesBehaveAsOracle() {
    QString text;
    QCOMPARE(errorOf([&] { rows("select order_seq.currval from dual"); }, &text), 8002);
    QCOMPARE(rows("select order_seq.nextval from dual"), QStringList({"1000"}));
    QCOMPARE(rows("select order_seq.nextval, order_seq.currval from dual"), QStringList({"1010|1010"}));
    exec("insert into orders (order_no, cust_no) values (order_seq.nextval, 2)");
    QCOMPARE(rows("select max(order_no), sales.order_seq.currval from orders"), QStringList({"1020|1020"}));
    QCOMPARE(errorOf([&] { rows("select nope.nextval from dual"); }), 2289);
    // Exact division, Oracle's labels, NVL, '' as Null, case-sensitive LIKE, MINUS.
    auto d = m_db->CreateDynaset("select 7/2 half, count(*), nvl(credit, -1) from customers where cust_name like 'S%' "
                                 "group by credit",
                                 4);
    QCOMPARE(d->FieldName(0), QString("HALF"));
    QCOMPARE(d->FieldName(1), QString("COUNT(*)"));
    QCOMPARE(d->FieldName(2), QString("NVL(CREDIT,-1)"));
    QCOMPARE(d->Fields(0).toDouble(), 3.5);
    QCOMPARE(d->Fields(2).toInt(), -1);
    QCOMPARE(rows("select count(*) from customers where cust_name like 's%'"), QStringList({"0"}));
    QCOMPARE(rows("select count(*) from customers where cust_name = ''"), QStringList({"0"}));
    QCOMPARE(rows("select cust_no from customers minus select cust_no from orders where order_no < 100"),
             QStringList({"2"}));
    QCOMPARE(rows("select user from dual"), QStringList({"SALES"}));
    // ROWNUM limits the rows before ORDER BY sorts them, as in Oracle.
    exec("insert into customers (cust_no, cust_name) values (3, 'C')");
    exec("insert into customers (cust_no, cust_name) values (4, 'D')");
    // Which two rows is Oracle's choice too; that they are two, match and come sorted is defined.
    const QStringList two =
        rows("select cust_no from customers where rownum <= 2 and cust_no > 1 order by cust_no desc");
    QCOMPARE(two.size(), 2);
    QVERIFY(two[0].toInt() > two[1].toInt() && two[1].toInt() > 1);
    QCOMPARE(rows("select cust_no from customers where rownum <= 2 and cust_no > 1"), QStringList({"2", "3"}));
    QCOMPARE(rows("select count(*) from customers where rownum < 3"), QStringList({"2"})); // limited before counting
    QCOMPARE(
        rows("select c.rank_code, count(*) from sales.customers c where rownum <= 3 group by c.rank_code order by 1"),
        QStringList({"A|1", "B|2"}));
    QCOMPARE(rows("select count(*) from (select cust_no from customers where 3 > rownum)"), QStringList({"2"}));
    QCOMPARE(rows("select cust_no from customers where rownum = 1").size(), 1);
    QCOMPARE(rows("select cust_no from customers where rownum > 1"), QStringList());
    QCOMPARE(
        rows("select cust_no, rownum from customers where cust_no in (select cust_no from customers where rownum < 2)"),
        QStringList({"1|1"}));
  }

  void ddlCommitsAndTruncateAndDrop() {
    m_fx->open("SALES", "secret"); // a second session does not disturb
    exec("create table scratch (id number primary key)");
    OraDatabase& db = *m_db;
    db.connection().begin();
    exec("insert into scratch values (1)");
    db.connection().rollback();
    QCOMPARE(rows("select count(*) from scratch"), QStringList({"0"}));

    db.connection().begin();
    exec("insert into scratch values (2)");
    exec("create table scratch2 (id number)"); // DDL commits the insert
    exec("insert into scratch values (3)");
    db.connection().rollback();
    QCOMPARE(rows("select id from scratch"), QStringList({"2"}));

    QCOMPARE(error("truncate table customers"), 2266);
    db.connection().begin();
    exec("insert into scratch values (4)");
    exec("truncate table order_lines");
    db.connection().rollback();
    QCOMPARE(rows("select count(*) from order_lines"), QStringList({"0"}));
    QCOMPARE(rows("select count(*) from scratch"), QStringList({"2"}));

    QCOMPARE(error("drop table customers"), 2449);
    exec("drop table customers cascade constraints purge");
    QCOMPARE(rows("select count(*) from user_tab_columns where table_name = 'CUSTOMERS'"), QStringList({"0"}));
    QCOMPARE(rows("select count(*) from user_constraints where constraint_name like 'ORDERS_CUST%'"),
             QStringList({"0"}));
    QCOMPARE(rows("select count(*) from all_tab_comments where table_name = 'CUSTOMERS'"), QStringList({"0"}));
    // The orders no longer need a customer.
    QCOMPARE(error("insert into orders values (99, 12345, null, 1, null)"), 0);
    exec("drop view big_orders");
    exec("drop sequence order_seq");
    QCOMPARE(error("drop sequence order_seq"), 2289);
    QCOMPARE(rows("select count(*) from user_objects where object_type <> 'INDEX'"), QStringList({"4"}));
  }

  void dynasetsReadCountAndDelete() {
    for (int option : {0, 4, 8}) {
      auto d =
          m_db->CreateDynaset("select cust_no, cust_name, credit, kana_name from customers order by cust_no", option);
      QCOMPARE(d->RecordCount(), qint64(2));
      QCOMPARE(d->FieldCount(), 4);
      QCOMPARE(d->Fields("CUST_NO").toInt(), 1);
      QCOMPARE(d->Fields("cust_name").toString(), QString("山田商店"));
      QVERIFY(!d->Fields(2).isValid()); // Null
      d->MoveNext();
      QCOMPARE(d->Fields(0).toInt(), 2);
      QVERIFY(!d->IsEOF());
      d->MoveNext();
      QVERIFY(d->IsEOF());
      QCOMPARE(errorOf([&] { d->Fields(0); }), 1002);
      QCOMPARE(errorOf([&] { d->Fields("nope"); }), 904);
      d->Close();
    }
    QCOMPARE(NullToValue(QVariant(), 0), QVariant(0));
    QCOMPARE(NullToValue(QVariant(), 1), QVariant(QString()));
    QCOMPARE(NullToValue(QVariant(), 2), QVariant(QString("Null")));
    QCOMPARE(NullToValue(QVariant(QString()), 0), QVariant(QString()));
    QCOMPARE(NullToValue(QVariant(5), 2), QVariant(5));

    // Row-by-row delete through an updatable dynaset, inside a transaction.
    m_db->connection().begin();
    auto lines = m_db->CreateDynaset("select l.line_no from order_lines l where l.qty > 0", 0);
    const qint64 n = lines->RecordCount();
    QCOMPARE(n, qint64(2));
    for (qint64 i = 0; i < n; ++i, lines->MoveNext())
      lines->Delete();
    lines->Close();
    QCOMPARE(rows("select count(*) from order_lines"), QStringList({"0"}));
    m_db->connection().rollback();
    QCOMPARE(rows("select count(*) from order_lines"), QStringList({"2"}));
    auto joined = m_db->CreateDynaset("select o.order_no from orders o, customers c where o.cust_no = c.cust_no", 0);
    QCOMPARE(errorOf([&] { joined->Delete(); }), 1732);
    auto readOnly = m_db->CreateDynaset("select order_no from orders", 4);
    QCOMPARE(errorOf([&] { readOnly->Delete(); }), 1732);
  }

  void datesCompareWithLiteralsAndReadInTheSessionFormat() {
    exec("delete from orders");
    exec("insert into orders (order_no, cust_no, order_date) values (1, 1, '2004/1/5')");
    exec("insert into orders (order_no, cust_no, order_date) values (2, 1, '2004/02/01 09:30:00')");
    exec("insert into orders (order_no, cust_no, order_date) values (3, 1, '2004/12/31 09:30:00')");
    exec("insert into orders (order_no, cust_no, order_date) values (4, 2, to_date('20050101', 'YYYYMMDD'))");
    // A literal with its trailing parts left out is that day's midnight.
    QCOMPARE(rows("select order_no from orders where order_date between '2004/01/01' and '2004/12/31' order by 1"),
             QStringList({"1", "2"}));
    QCOMPARE(rows("select order_no from orders where order_date = '2004/01/05 00:00:00'"), QStringList({"1"}));
    QCOMPARE(rows("select order_no from orders where order_date >= '2004/2/1 9:30' order by 1"),
             QStringList({"2", "3", "4"}));
    // Sorted as dates, read in one form whatever form they were written in.
    QCOMPARE(rows("select order_date from orders order by order_date"),
             QStringList({"2004/01/05", "2004/02/01 09:30:00", "2004/12/31 09:30:00", "2005/01/01"}));
    QCOMPARE(rows("select min(order_date), max(order_date) from orders"), QStringList({"2004/01/05|2005/01/01"}));
    // Joined to text, a date reads as it does in the session format.
    QCOMPARE(rows("select order_no || ': ' || order_date from orders where order_no < 3 order by order_no"),
             QStringList({"1: 2004/01/05", "2: 2004/02/01 09:30:00"}));
  }

  void savepointsRollBackPartOfATransaction() {
    m_db->connection().begin();
    exec("insert into customers (cust_no, cust_name) values (3, 'a')");
    exec("savepoint one");
    exec("insert into customers (cust_no, cust_name) values (4, 'b')");
    exec("savepoint two");
    exec("insert into customers (cust_no, cust_name) values (5, 'c')");
    exec("rollback to savepoint one");
    QCOMPARE(rows("select cust_no from customers order by 1"), QStringList({"1", "2", "3"}));
    // Rolling back to one forgets those set after it, and keeps it.
    QString text;
    QCOMPARE(error("rollback to two", &text), 1086);
    QCOMPARE(text, "ORA-01086: savepoint 'TWO' never established in this session or is invalid");
    exec("insert into customers (cust_no, cust_name) values (6, 'd')");
    exec("rollback work to one");
    m_db->connection().commit();
    QCOMPARE(rows("select cust_no from customers order by 1"), QStringList({"1", "2", "3"}));
    QCOMPARE(error("rollback to one"), 1086);
  }

  void nullsSortLastGoingUpAndFirstGoingDown() {
    exec("create table ord_t (id number, v number, s varchar2(10))");
    exec("insert into ord_t values (1, 20, 'b')");
    exec("insert into ord_t values (2, null, null)");
    exec("insert into ord_t values (3, 10, 'a')");
    exec("insert into ord_t values (4, null, '')");
    QCOMPARE(rows("select v from ord_t order by v"), QStringList({"10", "20", "<null>", "<null>"}));
    QCOMPARE(rows("select id from ord_t order by v, id"), QStringList({"3", "1", "2", "4"}));
    QCOMPARE(rows("select id from ord_t order by v asc, id"), QStringList({"3", "1", "2", "4"}));
    QCOMPARE(rows("select id from ord_t order by v desc, id"), QStringList({"2", "4", "1", "3"}));
    QCOMPARE(rows("select id from ord_t order by v nulls first, id"), QStringList({"2", "4", "3", "1"}));
    QCOMPARE(rows("select id from ord_t order by v desc nulls last, id desc"), QStringList({"1", "3", "4", "2"}));
    QCOMPARE(rows("select id, v from ord_t order by 2 desc, 1"), QStringList({"2|<null>", "4|<null>", "1|20", "3|10"}));
    QCOMPARE(rows("select id, s label from ord_t order by label, id"),
             QStringList({"3|a", "1|b", "2|<null>", "4|<null>"}));
    QCOMPARE(rows("select id from ord_t order by s || v desc, id"), QStringList({"2", "4", "1", "3"}));

    QCOMPARE(rows("select distinct v from ord_t order by v desc"), QStringList({"<null>", "20", "10"}));
    QCOMPARE(rows("select distinct s from ord_t order by 1 nulls first"), QStringList({"<null>", "a", "b"}));
    QCOMPARE(rows("select v from ord_t where id < 3 union select v from ord_t where id >= 3 order by 1"),
             QStringList({"10", "20", "<null>"}));
    QCOMPARE(rows("select s x from ord_t union all select 'c' from dual order by x desc nulls last"),
             QStringList({"c", "b", "a", "<null>", "<null>"}));
    QCOMPARE(rows("select v from ord_t minus select 20 from dual order by v desc"), QStringList({"<null>", "10"}));
    QCOMPARE(rows("select s from ord_t intersect select 'a' from dual union select null from dual order by s"),
             QStringList({"a", "<null>"}));

    QCOMPARE(rows("select id from (select id, v from ord_t order by v desc, id) where rownum <= 2"),
             QStringList({"2", "4"}));
    QCOMPARE(rows("select w.id from (select id, v from ord_t order by v, id) w where rownum < 4"),
             QStringList({"3", "1", "2"}));
    QCOMPARE(rows("select id from (select id, v from ord_t order by v nulls first, id desc)"),
             QStringList({"4", "2", "3", "1"}));
    QCOMPARE(rows("select id, row_number() over (order by v, id) from ord_t order by id"),
             QStringList({"1|2", "2|3", "3|1", "4|4"}));
    QCOMPARE(errorOf([&] { rows("select id from ord_t order by desc"); }), 936);

    // || and CONCAT pass over a NULL side, in SET and WHERE as in the select list.
    QCOMPARE(m_db->ExecuteSQL("update ord_t set s = s || '!' where v is null"), qint64(2));
    QCOMPARE(rows("select id from ord_t where s || 'x' = '!x' order by id"), QStringList({"2", "4"}));
    QCOMPARE(rows("select concat(s, v) from ord_t order by id"), QStringList({"b20", "!", "a10", "!"}));
  }
};

QTEST_GUILESS_MAIN(TestStatements)
#include "test_statements.moc"
