// Feeds mutated Oracle SQL through the whole statement path of the embedded engine: tokenizer,
// translator, outer joins, ROWNUM limits, DDL and SQLite. Every statement must end in rows or
// in an Oracle error other than an internal one; a crash, a hang or any other exception fails
// the run. Then random conditions over a small table must select exactly the rows whose truth
// is worked out here, and queries built from them must keep the identities of SQL.
//
// DBSWEEP_FUZZ_SECONDS sets how long it runs (60 by default); DBSWEEP_FUZZ_SEED repeats a run.

#include "EngineFixture.h"
#include "FuzzRun.h"
#include "ReferenceConditions.h"

#include "db/local/SqlLexer.h"

#include <cstdio>

namespace {

const QStringList Seeds = {
    "select a.table_name, b.tbl_nm, nvl(c.comments, a.table_name) from user_tables a, tbtblm b, "
    "user_tab_comments c where b.tbl_id (+) = a.table_name and c.table_name (+) = a.table_name order by 1",
    "select o.order_no, c.cust_name from orders o, customers c where o.cust_no = c.cust_no (+) and "
    "c.rank_code (+) = 'A' union select order_no, null from orders minus select 1, 'x' from dual",
    "select cust_no, decode(rank_code, 'A', 1, 'B', 2, 0), nvl2(credit, 'y', 'n') from customers where "
    "cust_no in (select cust_no from orders where rownum <= 3 and amount > 10) and cust_name like 'S%'",
    "select to_char(order_date, 'YYYY/MM/DD HH24:MI'), trunc(order_date, 'MM'), add_months(order_date, -2), "
    "months_between(sysdate, order_date), last_day(order_date) from orders where order_date between "
    "'2004/01/01' and '2004/12/31'",
    "select substr(cust_name, 2, 3), instr(cust_name, 'a', -1), lpad(cust_no, 8, '0'), trim(' x '), "
    "replace(cust_name, 'a'), upper(kana_name), round(credit / 3, 2), mod(cust_no, 7), greatest(1, 2, 3) "
    "from customers where rownum < 5",
    "select count(*), rank_code from customers group by rank_code having count(*) > 0 order by 2 desc",
    "select order_seq.nextval, order_seq.currval, user, sysdate, systimestamp, rownum from dual",
    "select owner, table_name, column_name, data_type, data_precision, data_scale from all_tab_columns where "
    "upper(owner) = upper('sales') and table_name in (select table_name from all_tab_columns where "
    "column_name = 'CUST_NO') order by table_name, column_id",
    "select sid, serial#, username, status, machine, program from v$session where username is not null",
    "select a.constraint_name, b.column_name, b.position from all_constraints a, all_cons_columns b where "
    "a.owner = b.owner (+) and a.constraint_name = b.constraint_name (+) and a.constraint_type in ('P', 'U')",
    "insert into orders (order_no, cust_no, order_date, amount, status) values (order_seq.nextval, 1, "
    "to_date('2004/06/17', 'YYYY/MM/DD'), 1500.25, 'OPEN')",
    "update orders set amount = amount * 1.1, status = decode(status, 'OPEN', 'DONE', status) where order_no > 0",
    "delete from order_lines where order_no in (select order_no from orders where cust_no = 1)",
    "create table work1 (id number(10) primary key, name varchar2(20) not null, created date default sysdate, "
    "constraint work1_uk unique (name))",
    "alter table work1 add (note varchar2(100), amount number(12, 2) check (amount >= 0))",
    "comment on column work1.name is '名前'",
    "create index work1_ix on work1 (created desc, name)",
    "create unique index work1_fx on work1 (upper(name), substr(note, 1, 2) desc)",
    "create or replace synonym cs for customers",
    "select cs.cust_name, o.amount from cs join orders o on o.cust_no = cs.cust_no where cs.cust_no in "
    "(select cust_no from cs) order by 1",
    "truncate table order_lines",
    "drop table work1 cascade constraints",
    "select * from (select cust_no, count(*) n from orders group by cust_no) where n > 1 and rownum <= 10",
    "select level, cust_no, sys_connect_by_path(cust_name, '/'), connect_by_root cust_no, prior cust_name from "
    "customers where level <= 3 start with rank_code = 'A' connect by nocycle prior cust_no = credit order "
    "siblings by cust_name",
    "select cust_no, row_number() over (partition by rank_code order by credit desc) from customers order by 1 "
    "offset 1 rows fetch next 2 rows only",
    "select regexp_replace(cust_name, '(a)(b)?', '\\1x', 1, 0, 'i'), regexp_substr(cust_name, '[^ ]+', 1, 2), "
    "translate(cust_name, 'ab', 'x'), trim(leading 'S' from cust_name), dump(credit), nullif(cust_no, 2), "
    "timestamp '2024-01-31 10:00:00.5' + interval '1 02:03:04.5' day to second, interval '1-6' year to month, "
    "numtodsinterval(credit, 'hour'), sys_context('USERENV', 'SID'), 1 / 3, remainder(cust_no, 3) from customers "
    "where regexp_like(cust_name, '^S', 'i') and sysdate - timestamp '2004-01-01 00:00:00' > interval '1' day",
    // Loops stay bounded by FOR: a mutated WHILE could run for ever, as it would on a server.
    "declare n number(8, 2) := 0; s varchar2(20) := 'x'; d date := sysdate; b boolean := n > 1; begin for i in "
    "reverse 1..20 loop if mod(i, 3) = 0 then n := n + i / 2; elsif b or i > 15 then s := substr(s || i, 1, 20); "
    "else null; end if; end loop; select cust_name into s from customers where cust_no = n; "
    "for r in (select cust_no, credit from customers) loop update orders set amount = amount + nvl(r.credit, n) "
    "where cust_no = r.cust_no; end loop; dbms_output.put_line(s || sql%rowcount || d); execute immediate "
    "'delete from order_lines where qty > :1' using n; exception when no_data_found then "
    "raise_application_error(-20001, 'none'); when others then raise; end;",
};

const QStringList Interesting = {
    "(+)",     "(",      ")",          ",",       "'",     "''",         "'x'",     "\"",     "\"Q\"",
    "1",       "-1",     "1e309",      ".",       "*",     "/",          "||",      "=",      "<=",
    "<>",      "!=",     ">",          "SELECT",  "FROM",  "WHERE",      "AND",     "OR",     "NOT",
    "IN",      "EXISTS", "UNION",      "ALL",     "MINUS", "ROWNUM",     "DUAL",    "NULL",   "NVL(",
    "(+",      "+)",     "SYSDATE",    "NEXTVAL", "ORDER", "BY",         "GROUP",   "HAVING", "DISTINCT",
    "CASE",    "WHEN",   "THEN",       "END",     "LIKE",  "ESCAPE",     "BETWEEN", ":b",     "--",
    "/*",      "*/",     ";",          "\\",      "\t",    "日本",       "TABLE",   "CREATE", "ALTER",
    "DROP",    "INDEX",  "CONSTRAINT", "PRIMARY", "KEY",   "REFERENCES", "DEFAULT", "@",      "$",
    "CONNECT", "PRIOR",  "LEVEL",      "START",   "WITH",  "FETCH",      "OFFSET",  "ROWS",   "OVER",
    "SECOND",  "YEAR",   "INTERVAL",   "DAY",     "TO",    "TIMESTAMP",  "LEADING", "1e126",  "TRAILING",
    "DECLARE", "BEGIN",  ":=",         "..",      "INTO",  "EXCEPTION",  "IF",      "RAISE",  "%",
};

QString mutate(const QString& seed, QRandomGenerator& random) {
  std::vector<SqlToken> tokens = tokenizeSql(seed);
  QStringList parts;
  for (const SqlToken& t : tokens)
    if (t.kind != SqlToken::Kind::End)
      parts << seed.mid(t.pos, t.length);
  Fuzz::editParts(parts, random, Interesting);
  return parts.join(u' ');
}

void runOne(OraDatabase& db, const QString& sql) {
  if (sql.trimmed().startsWith(QStringLiteral("select"), Qt::CaseInsensitive)) {
    auto d = db.CreateDynaset(sql, OraDynaset::ReadOnly);
    for (qint64 r = 0; r < 1000 && !d->IsEOF(); ++r) {
      for (int c = 0; c < d->FieldCount(); ++c)
        d->Fields(c);
      d->MoveNext();
    }
  } else {
    db.ExecuteSQL(sql);
  }
}

} // namespace

class FuzzSql final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void mutatedStatementsEndInRowsOrOracleErrors() {
    const int seconds = Fuzz::runSeconds();
    QRandomGenerator random(Fuzz::runSeed());
    QElapsedTimer clock;
    clock.start();
    Fuzz::Watchdog watchdog(10);

    qint64 executions = 0, oracleErrors = 0;
    QString failure;
    while (failure.isEmpty() && clock.elapsed() < seconds * 1000LL) {
      EngineFixture fx;
      auto db = fx.sales();
      EngineFixture::run(*db, QStringLiteral(FIXTURES "/sales_schema.sql"));
      db->ExecuteSQL("create table tbtblm (tbl_id varchar2(30), tbl_nm varchar2(60))");
      // A fresh schema now and then: mutated DDL wears the old one away.
      for (int i = 0; i < 3000 && failure.isEmpty() && clock.elapsed() < seconds * 1000LL; ++i) {
        const QString& base = Seeds[random.bounded(int(Seeds.size()))];
        const QString sql = random.bounded(10) == 0 ? base : mutate(base, random);
        watchdog.begin(sql);
        try {
          runOne(*db, sql);
        } catch (const OraError& e) {
          ++oracleErrors;
          if (e.number() <= 0)
            failure = QStringLiteral("an error without an Oracle number for: ") + sql;
          else if (e.number() == 600)
            failure = QStringLiteral("an internal error (%1) for: %2").arg(e.message(), sql);
        } catch (const std::exception& e) {
          failure = QStringLiteral("%1 for: %2").arg(QString::fromLocal8Bit(e.what()), sql);
        }
        watchdog.end();
        ++executions;
      }
    }
    std::printf("%lld executions, %lld ended in Oracle errors\n", executions, oracleErrors);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    QVERIFY(executions > 0);
  }

  // Each condition selects the rows it is true for, COUNT(*) counts them, A MINUS B keeps A's
  // rows that are not B's, and DISTINCT keeps each value once, NULL last.
  void conditionsSelectTheRowsTheyAreTrueFor() {
    using namespace ReferenceConditions;
    const int seconds = Fuzz::runSeconds();
    QRandomGenerator random(Fuzz::runSeed());
    QElapsedTimer clock;
    clock.start();
    qint64 checked = 0;
    QString failure;
    while (failure.isEmpty() && clock.elapsed() < seconds * 1000LL) {
      EngineFixture fx;
      auto db = fx.sales();
      db->ExecuteSQL("create table f (id number primary key, n number(6, 2), s varchar2(10), d date)");
      const std::vector<Row> rows = randomRows(random, 30);
      for (const Row& r : rows)
        db->ExecuteSQL(insertOf(r));
      for (int i = 0; i < 300 && failure.isEmpty() && clock.elapsed() < seconds * 1000LL; ++i, ++checked) {
        const Condition p = randomCondition(random);
        const Condition q = randomCondition(random);
        const QStringList ofP = idsWhere(rows, p);
        const QStringList ofQ = idsWhere(rows, q);
        QStringList onlyP;
        QStringList texts;
        bool nullText = false;
        for (const QString& id : ofP) {
          if (!ofQ.contains(id))
            onlyP << id;
          const auto& s = rows[size_t(id.toInt() - 1)].s;
          if (!s)
            nullText = true;
          else if (!texts.contains(*s))
            texts << *s;
        }
        std::sort(texts.begin(), texts.end());
        if (nullText)
          texts << QStringLiteral("<null>");
        const QString where = QStringLiteral(" from f where ") + p.sql;
        const QList<std::pair<QString, QStringList>> checks = {
            {"select id" + where + " order by id", ofP},
            {"select count(*)" + where, {QString::number(ofP.size())}},
            {"select id" + where + " minus select id from f where " + q.sql + " order by 1", onlyP},
            {"select distinct s" + where + " order by 1", texts},
        };
        for (const auto& [sql, expected] : checks) {
          try {
            const QStringList got = rowsOf(*db, sql);
            if (got != expected)
              failure = QStringLiteral("%1 gave %2 instead of %3").arg(sql, got.join(u','), expected.join(u','));
          } catch (const OraError& e) {
            failure = QStringLiteral("%1 failed: %2").arg(sql, e.message());
          }
          if (!failure.isEmpty())
            break;
        }
      }
    }
    std::printf("%lld conditions checked\n", checked);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    QVERIFY(checked > 0);
  }
};

int main(int argc, char* argv[]) {
  Fuzz::allowLongRun();
  QCoreApplication app(argc, argv);
  FuzzSql test;
  return QTest::qExec(&test, argc, argv);
}
#include "fuzz_sql.moc"
