#include "EngineFixture.h"

class TestSynonyms final : public QObject, SalesSession {
  Q_OBJECT

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }
  int error(const QString& sql) {
    return errorOf([&] { exec(sql); });
  }
  int errorIn(OraDatabase& db, const QString& sql) {
    return errorOf([&] { rowsOf(db, sql); });
  }
  std::shared_ptr<OraDatabase> system() const {
    return m_fx->open(QStringLiteral("SYSTEM"), QStringLiteral("manager"));
  }

private Q_SLOTS:
  void init() {
    openSales();
    exec("create table t (id number primary key, name varchar2(10))");
    exec("insert into t values (1, 'a')");
    exec("create synonym s for t");
  }
  void cleanup() { closeSales(); }

  void aPrivateSynonymStandsForItsObjectEverywhere() {
    QCOMPARE(rows("select s.name from s where s.id = 1"), QStringList({"a"}));
    QCOMPARE(rows("select x.id from s x join s y on x.id = y.id where x.id in (select id from s)"), QStringList({"1"}));
    exec("insert into s values (2, 'b')");
    exec("update s set name = 'B' where s.id = 2");
    exec("merge into s using (select 3 id from dual) n on (s.id = n.id) when not matched then insert values (n.id, "
         "'c')");
    exec("delete s where id = 1");
    QCOMPARE(rows("select id || name from t order by id"), QStringList({"2B", "3c"}));
    exec("create sequence q start with 10");
    exec("create synonym qs for q");
    exec("begin insert into s values (qs.nextval, 'd'); end;");
    QCOMPARE(rows("select qs.currval from dual"), QStringList({"10"}));
    exec("create view v as select name from s where id > 2");
    QCOMPARE(rows("select name from v order by 1"), QStringList({"c", "d"}));
    // A query's own name hides the synonym.
    QCOMPARE(rows("with s as (select 7 id from dual) select id from s"), QStringList({"7"}));
    QCOMPARE(error("create synonym s for t"), 955);
    QCOMPARE(error("create table s (x number)"), 955);
    QCOMPARE(error("create or replace synonym t for s"), 955);
    QCOMPARE(error("create synonym t2 for t2"), 1471);
    QCOMPARE(error("create synonym public.p for t"), 1886);
    exec("create or replace synonym s for v");
    QCOMPARE(rows("select count(*) from s"), QStringList({"2"}));
  }

  void publicSynonymsAndPrivileges() {
    QCOMPARE(error("create public synonym pt for t"), 1031);
    auto sys = system();
    sys->ExecuteSQL("create public synonym pt for sales.t");
    QCOMPARE(rows("select name from pt"), QStringList({"a"}));
    sys->ExecuteSQL("create user other identified by pw");
    sys->ExecuteSQL("grant create session to other");
    auto other = m_fx->open(QStringLiteral("OTHER"), QStringLiteral("pw"));
    QCOMPARE(errorIn(*other, "select * from pt"), 942);
    QCOMPARE(errorIn(*other, "select * from sales.s"), 942);
    exec("grant select on t to other");
    QCOMPARE(rowsOf(*other, "select s.name from sales.s"), QStringList({"a"}));
    // Having read another schema's table does not make its name the session's own.
    QCOMPARE(errorIn(*other, "select * from t"), 942);
    QCOMPARE(errorOf([&] { other->ExecuteSQL("insert into t values (9, 'x')"); }), 942);
    QCOMPARE(rowsOf(*other, "select id from pt"), QStringList({"1"}));
    QCOMPARE(errorOf([&] { other->ExecuteSQL("delete from pt"); }), 1031);
    // Creating one takes the system privilege for it, which RESOURCE does not hold.
    QCOMPARE(errorOf([&] { other->ExecuteSQL("create synonym mine for sales.t"); }), 1031);
    sys->ExecuteSQL("grant create synonym to other");
    other->ExecuteSQL("create synonym mine for sales.t");
    QCOMPARE(rowsOf(*other, "select id from mine"), QStringList({"1"}));
    QCOMPARE(error("drop public synonym pt"), 1031);
    sys->ExecuteSQL("drop public synonym pt");
    QCOMPARE(errorIn(*other, "select * from pt"), 942);
    QCOMPARE(errorOf([&] { sys->ExecuteSQL("drop public synonym pt"); }), 1432);
    // The session's own objects come before public synonyms.
    sys->ExecuteSQL("create public synonym pt for sales.t");
    exec("create table pt (x varchar2(5))");
    exec("insert into pt values ('own')");
    QCOMPARE(rows("select * from pt"), QStringList({"own"}));
  }

  void brokenChainsAndDrops() {
    exec("create synonym d for nosuch");
    QCOMPARE(errorIn(*m_db, "select * from d"), 980);
    exec("create synonym s1 for s2");
    exec("create synonym s2 for s3");
    exec("create synonym s3 for s1");
    QCOMPARE(errorIn(*m_db, "select * from s1"), 1775);
    QCOMPARE(error("insert into s2 values (1)"), 1775);
    // A name the schema lacks is looked for among the public synonyms, which may lead back.
    auto sys = system();
    sys->ExecuteSQL("create table books (id int)");
    sys->ExecuteSQL("create synonym b for books");
    sys->ExecuteSQL("create public synonym books for b");
    sys->ExecuteSQL("drop table books");
    QCOMPARE(errorIn(*sys, "select * from b"), 1775);
    exec("drop synonym s force");
    QCOMPARE(errorIn(*m_db, "select * from s"), 942);
    QCOMPARE(error("drop synonym s"), 1434);
    QCOMPARE(error("drop table d"), 942);
  }

  void dictionary() {
    exec("create synonym d for other.x");
    QCOMPARE(rows("select synonym_name, table_owner, table_name, db_link, origin_con_id from user_synonyms "
                  "order by 1"),
             QStringList({"D|OTHER|X|<null>|0", "S|SALES|T|<null>|0"}));
    QCOMPARE(rows("select object_type, status from user_objects where object_name = 'S'"),
             QStringList({"SYNONYM|VALID"}));
    auto sys = system();
    sys->ExecuteSQL("create public synonym ps for sales.t");
    QCOMPARE(rows("select owner, synonym_name from all_synonyms order by 1, 2"),
             QStringList({"PUBLIC|PS", "SALES|D", "SALES|S"}));
    QCOMPARE(rows("select owner, object_type from all_objects where object_name = 'PS'"),
             QStringList({"PUBLIC|SYNONYM"}));
    QCOMPARE(rowsOf(*sys, "select owner, table_owner, table_name from dba_synonyms where synonym_name = 'PS'"),
             QStringList({"PUBLIC|SALES|T"}));
    QCOMPARE(errorIn(*m_db, "select * from dba_synonyms"), 942);
  }
};

QTEST_GUILESS_MAIN(TestSynonyms)
#include "test_synonyms.moc"
