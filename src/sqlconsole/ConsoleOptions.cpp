#include "sqlconsole/ConsoleOptions.h"

#include "sqlconsole/Logon.h"

namespace {

ConsoleOptions invalid(const QString& error) {
  ConsoleOptions options;
  options.error = error;
  return options;
}

} // namespace

ConsoleOptions ConsoleOptions::parse(const QStringList& arguments) {
  ConsoleOptions options;
  QString logon;
  bool createInstance = false;
  for (qsizetype i = 0; i < arguments.size(); ++i) {
    const QString& arg = arguments[i];
    const auto value = [&]() -> std::optional<QString> {
      if (i + 1 >= arguments.size())
        return std::nullopt;
      return arguments[++i];
    };
    if (arg == u"--help" || arg == u"-h") {
      options.mode = Mode::Help;
      return options;
    } else if (arg == u"--csv") {
      options.csv = true;
    } else if (arg == u"--continue") {
      options.continueOnError = true;
    } else if (arg == u"--create-instance") {
      const auto instance = value();
      if (!instance)
        return invalid(QStringLiteral("--create-instance needs local:NAME or local:/folder"));
      createInstance = true;
      options.instance = *instance;
    } else if (arg == u"--system-password") {
      options.systemPassword = value();
      if (!options.systemPassword)
        return invalid(QStringLiteral("--system-password needs a password"));
    } else if (!options.script.isEmpty()) {
      options.scriptArguments += arg;
    } else if (arg.startsWith(u'-') && arg.size() > 1) {
      return invalid(QStringLiteral("unknown option %1").arg(arg));
    } else if (arg.startsWith(u'@')) {
      if (arg.size() == 1)
        return invalid(QStringLiteral("give the script as @script.sql"));
      options.script = arg.mid(1);
    } else if (logon.isEmpty()) {
      logon = arg;
    } else {
      return invalid(QStringLiteral("unexpected argument %1").arg(arg));
    }
  }

  if (createInstance) {
    if (!logon.isEmpty() || !options.script.isEmpty() || options.csv || options.continueOnError)
      return invalid(QStringLiteral("--create-instance takes no logon, script, --csv or --continue"));
    if (!options.instance.startsWith(QStringLiteral("local:"), Qt::CaseInsensitive) || options.instance.size() <= 6)
      return invalid(
          QStringLiteral("--create-instance needs local:NAME or local:/folder, not %1").arg(options.instance));
    options.mode = Mode::CreateInstance;
    return options;
  }
  if (options.systemPassword)
    return invalid(QStringLiteral("--system-password goes with --create-instance"));
  if (logon.compare(u"/nolog", Qt::CaseInsensitive) == 0) {
    options.noLog = true;
    return options;
  }
  if (logon.isEmpty())
    return invalid(QStringLiteral("missing USER/PASSWORD@HOST"));
  const Logon parsed = Logon::parse(logon);
  if (!parsed.error.isEmpty())
    return invalid(parsed.error);
  if (parsed.host.isEmpty())
    return invalid(QStringLiteral("missing @HOST in %1").arg(parsed.user));
  options.user = parsed.user;
  options.password = parsed.password;
  options.host = parsed.host;
  return options;
}

QString ConsoleOptions::usage() {
  return QStringLiteral("Usage: dbsweep-sql [--csv] [--continue] USER[/PASSWORD]@HOST|/NOLOG [@script.sql [ARG...]]\n"
                        "       dbsweep-sql --create-instance local:NAME [--system-password PASSWORD]\n"
                        "\n"
                        "Runs SQL in the manner of SQL*Plus, from the script or else from standard input.\n"
                        "A statement ends with ';' at the end of a line or with a line holding only '/'.\n"
                        "REM, --, /* */, PROMPT, SET, COLUMN, CLEAR COLUMNS, SPOOL, DESCRIBE, SHOW USER, DEFINE,\n"
                        "UNDEFINE, &name and &&name, @ and @@, CONNECT, DISCONNECT, WHENEVER SQLERROR and EXIT\n"
                        "lines are understood (SET LINESIZE, PAGESIZE, HEADING, FEEDBACK, ECHO, TIMING, VERIFY,\n"
                        "DEFINE, TERMOUT, SERVEROUTPUT); without SET LINESIZE or PAGESIZE rows are neither\n"
                        "wrapped nor paged. A [DECLARE ...] BEGIN ... END; block, ended by a '/' line, runs whole.\n"
                        "All work is one transaction: committed at the end of the input, rolled back when an\n"
                        "error stops the run (WHENEVER SQLERROR EXIT commits unless it says ROLLBACK).\n"
                        "COMMIT and ROLLBACK statements end it earlier; CONNECT and DISCONNECT commit it.\n"
                        "\n"
                        "HOST is local:NAME (an embedded instance under $DBSWEEP_DATA_DIR/instances) or\n"
                        "local:/folder. Without /PASSWORD the password is asked for; /NOLOG starts without a\n"
                        "connection, for a CONNECT USER[/PASSWORD][@HOST] later.\n"
                        "\n"
                        "Options:\n"
                        "  --csv                 print query rows as CSV (RFC 4180, UTF-8), no feedback and no\n"
                        "                        old/new lines of substitution\n"
                        "  --continue            report errors and go on; the exit status still shows them\n"
                        "  --create-instance H   create an empty embedded instance at H (local:NAME or local:/folder)\n"
                        "  --system-password PW  password of its SYSTEM user; asked for twice when left out\n"
                        "  -h, --help            show this text\n"
                        "\n"
                        "Exit status: 0 when all went well, 1 after an error, 2 for a bad command line, or what\n"
                        "EXIT n or EXIT SQL.SQLCODE (the last ORA- number) gives.\n");
}
