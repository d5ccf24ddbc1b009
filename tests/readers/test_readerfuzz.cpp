// Feeds random and mutated files to every reader of text that comes from outside the program:
// tnsnames.ora, the name-master files, the settings files and SQL*Plus scripts. Whatever the
// bytes (cut multibyte sequences, lone surrogates, NULs, byte-order marks, lines of megabytes),
// each reader must come back, in time, with an answer that keeps its own rules.
//
// DBSWEEP_FUZZ_SECONDS sets how long it runs (60 by default); DBSWEEP_FUZZ_SEED repeats a run.

#include "FuzzRun.h"

#include "app/HostList.h"
#include "browser/NameMasters.h"
#include "db/script/ScriptReader.h"
#include "platform/RegistryFile.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QStringDecoder>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <functional>

namespace {

// Several times what the slowest check needs for the largest input under the sanitizers: only a
// hang, or time that grows much faster than the input, gets there.
constexpr int InputLimitSeconds = 30;

// One reader with the inputs it starts from. check reads the bytes and says what is wrong with
// the answer, or "" when it keeps the reader's rules.
struct Reader {
  QString name;
  QStringList seeds;
  QStringList interesting;
  std::function<QByteArray(const QString&, QRandomGenerator&)> encode;
  std::function<QString(const QByteArray&)> check;
};

// Parts that keep words and runs of blanks whole, so that edits move whole words as a person
// editing the file would.
QStringList partsOf(const QString& text) {
  QStringList parts;
  qsizetype start = 0;
  const auto kind = [](QChar c) { return c.isLetterOrNumber() ? 1 : c == u' ' || c == u'\t' ? 2 : 0; };
  for (qsizetype i = 1; i <= text.size(); ++i) {
    if (i == text.size() || kind(text[i]) == 0 || kind(text[i]) != kind(text[start])) {
      parts << text.mid(start, i - start);
      start = i;
    }
  }
  return parts;
}

// Characters that trip readers up: ones no well-formed text holds, line ends and quotes.
const QStringList OddText = {QString(QChar(0xD800)), QString(QChar(0xDFFF)), QString(QChar(u'\0')),
                             QString(QChar(0xFEFF)), QString(QChar(0xFFFD)), QStringLiteral("\r"),
                             QStringLiteral("\n"),   QStringLiteral("\r\n"), QStringLiteral("\t"),
                             QStringLiteral("\""),   QStringLiteral("\\")};
// NUL; byte-order marks of UTF-8 and UTF-16; UTF-8 of lone surrogates, an overlong form and a
// code point past U+10FFFF; UTF-8 and CP932 sequences cut short; a CP932 lead byte with a bad
// trail; bytes no UTF-8 holds; line ends and delimiters.
const QList<QByteArray> OddBytes = {QByteArrayLiteral("\0"),
                                    "\xEF\xBB\xBF",
                                    "\xFF\xFE",
                                    "\xFE\xFF",
                                    "\xED\xA0\x80",
                                    "\xED\xBF\xBF",
                                    "\xC0\xAF",
                                    "\xF4\x90\x80\x80",
                                    "\xE3\x81",
                                    "\xF0\x9F",
                                    "\x82",
                                    "\x81\x7F",
                                    "\xA0",
                                    "\xFF",
                                    "\r",
                                    "\n",
                                    "\r\n",
                                    "\"",
                                    ","};

void editBytes(QByteArray& bytes, QRandomGenerator& random) {
  const int edits = 1 + int(random.bounded(8));
  for (int e = 0; e < edits; ++e) {
    const auto at = qsizetype(random.bounded(int(bytes.size()) + 1));
    const auto length = qMin(qsizetype(random.bounded(1, 64)), bytes.size() - at);
    switch (random.bounded(5)) {
    case 0:
      if (at < bytes.size())
        bytes[at] = char(random.bounded(256));
      break;
    case 1: bytes.insert(at, OddBytes[random.bounded(int(OddBytes.size()))]); break;
    case 2: bytes.remove(at, length); break;
    case 3: bytes.insert(at, bytes.mid(at, length)); break;
    default: bytes.truncate(at); break; // most often inside a multibyte sequence
    }
  }
}

// Megabytes: one line of a piece of the input over and over (a single character makes one
// endless word or blank), or the whole input many times.
void grow(QByteArray& bytes, QRandomGenerator& random) {
  const qsizetype target = qsizetype(random.bounded(1, 5)) << 20;
  if (random.bounded(2) == 0 || bytes.isEmpty()) {
    const auto at = qsizetype(random.bounded(int(bytes.size()) + 1));
    const int length = random.bounded(2) == 0 ? 1 : random.bounded(2, 80);
    QByteArray piece = bytes.mid(at, length).replace('\n', ' ');
    if (piece.isEmpty())
      piece = "x";
    bytes.insert(at, piece.repeated(target / piece.size()));
  } else {
    bytes = bytes.repeated(target / bytes.size() + 1);
  }
}

QByteArray randomBytes(QRandomGenerator& random) {
  QByteArray bytes(random.bounded(4096), Qt::Uninitialized);
  for (char& b : bytes)
    b = char(random.bounded(256));
  return bytes;
}

QByteArray makeInput(const Reader& reader, QRandomGenerator& random) {
  if (random.bounded(20) == 0)
    return randomBytes(random);
  QString text = reader.seeds[random.bounded(int(reader.seeds.size()))];
  if (random.bounded(3) != 0) {
    QStringList parts = partsOf(text);
    Fuzz::editParts(parts, random, reader.interesting + OddText);
    text = parts.join(QString());
  }
  QByteArray bytes = reader.encode(text, random);
  if (random.bounded(3) == 0)
    editBytes(bytes, random);
  if (random.bounded(32) == 0)
    grow(bytes, random);
  return bytes;
}

QByteArray utf8(const QString& text, QRandomGenerator&) { return text.toUtf8(); }

// The code units themselves, so that a reader handed text directly meets lone surrogates too.
QByteArray utf16(const QString& text, QRandomGenerator&) {
  return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

QString fromUtf16(const QByteArray& bytes) {
  return QString(reinterpret_cast<const QChar*>(bytes.constData()), bytes.size() / 2);
}

QString readText(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
    qFatal("cannot write %s", qPrintable(path));
}

QString checkTnsNames(const QString& path, const QByteArray& bytes) {
  writeFile(path, bytes);
  const QStringList aliases = ReadTnsNames(path);
  if (aliases.size() > bytes.count('\n') + 1)
    return QStringLiteral("more aliases than lines");
  for (const QString& alias : aliases)
    if (alias.contains(u'.') || alias.contains(u'\n') || alias.startsWith(u' ') || alias.endsWith(u' '))
      return QStringLiteral("the alias \"%1\" was not cut and trimmed").arg(alias.left(100));
  return {};
}

QString checkNameMaster(const QString& path, const QByteArray& bytes) {
  writeFile(path, bytes);
  NameMasterFile master;
  master.load(path);
  QHash<QString, int> first;
  for (int i = 1; i <= master.count(); ++i) {
    first.insert(master.id(i), first.value(master.id(i), i));
    if (master.lookup(master.id(i)) != master.name(first[master.id(i)]))
      return QStringLiteral("record %1 is not found by its ID").arg(i);
  }
  if (!master.id(0).isEmpty() || !master.id(master.count() + 1).isEmpty())
    return QStringLiteral("a record outside 1..count");
  return {};
}

QString checkSettings(const QString& text) {
  const QString keyPath = QStringLiteral("SOFTWARE\\JVK\\DBSWEEP\\Settings");
  RegistryFile file = RegistryFile::parse(text);
  const QString once = file.serialize(keyPath);
  if (RegistryFile::parse(once).serialize(keyPath) != once)
    return QStringLiteral("a rewritten file reads back differently");
  const QString value = QStringLiteral("a \"b\" \\c\r\nd");
  file.set(QStringLiteral("fuzzkey"), value);
  const RegistryFile rewritten = RegistryFile::parse(file.serialize(keyPath));
  const auto* entry = rewritten.find(QStringLiteral("FUZZKEY"));
  if (!entry || entry->value.text != value)
    return QStringLiteral("a value written into the file does not read back");
  return {};
}

QString checkScript(const QString& text) {
  const int lines = int(text.count(u'\n')) + 1;
  for (const ScriptItem& item : ScriptReader::read(text))
    if (item.line < 1 || item.line > lines)
      return QStringLiteral("an item on line %1 of a script of %2 lines").arg(item.line).arg(lines);
  return {};
}

QStringList scriptSeeds() {
  QStringList folders{QStringLiteral(FIXTURES), QStringLiteral(DEMO_DIR)};
  if (!QStringLiteral(EXTRA_SCRIPTS).isEmpty())
    folders << QStringLiteral(EXTRA_SCRIPTS);
  QStringList seeds;
  for (const QString& folder : folders)
    for (const QFileInfo& f : QDir(folder).entryInfoList({QStringLiteral("*.sql")}, QDir::Files))
      seeds << readText(f.filePath());
  return seeds;
}

QList<Reader> readers(const QTemporaryDir& dir) {
  const QString tnsPath = dir.filePath(QStringLiteral("tnsnames.ora"));
  const QString masterPath = dir.filePath(QStringLiteral("TBTBLM.dat"));
  QStringList masters;
  for (const char* name : {"TBTBLM.dat", "TBCLMM.dat"}) {
    QFile file(QStringLiteral(DEMO_DIR "/") + QLatin1StringView(name));
    if (file.open(QIODevice::ReadOnly))
      masters << QStringDecoder("windows-31j").decode(file.readAll());
  }
  // Written by hand or by a spreadsheet: in the Japanese code page or in UTF-8, with or without a
  // byte-order mark.
  const auto encodeMaster = [](const QString& text, QRandomGenerator& random) -> QByteArray {
    switch (random.bounded(3)) {
    case 0: return QStringEncoder("windows-31j").encode(text);
    case 1: return "\xEF\xBB\xBF" + text.toUtf8();
    default: return text.toUtf8();
    }
  };
  const QStringList settings{readText(QStringLiteral(FIXTURES "/readers/Settings.ini"))};
  const QStringList settingsWords{"\"", "=", "dword:", "expand:", "hex:", "[", "]", ";", "\\\"", "\\n", "\\"};
  const QStringList scripts = scriptSeeds();
  const QStringList scriptWords{"/",    ";",       "\n/\n",  "\n.\n",     "BEGIN", "DECLARE",  "END;",     "CREATE",
                                "OR",   "REPLACE", "q'[",    "]'",        "'",     "\"",       "/*",       "*/",
                                "/*+",  "--",      "REM",    "PROMPT",    "SET",   "WHENEVER", "SQLERROR", "EXIT",
                                "QUIT", "NULL",    "SELECT", "PROCEDURE", "INSERT"};
  return {
      {QStringLiteral("tnsnames.ora"),
       {readText(QStringLiteral(FIXTURES "/readers/tnsnames.ora"))},
       {"=", " =", "(", ")", "#", ".", " ", "\n ", "DESCRIPTION", "ADDRESS", "HOST", "PORT", "IFILE"},
       utf8,
       [tnsPath](const QByteArray& b) { return checkTnsNames(tnsPath, b); }},
      {QStringLiteral("name master"),
       masters,
       {",", "\"", " ", "\t", "　", "ﾃｰﾌﾞﾙ", "表"},
       encodeMaster,
       [masterPath](const QByteArray& b) { return checkNameMaster(masterPath, b); }},
      {QStringLiteral("settings file"), settings, settingsWords, utf8,
       [](const QByteArray& b) { return checkSettings(QString::fromUtf8(b)); }},
      {QStringLiteral("settings text"), settings, settingsWords, utf16,
       [](const QByteArray& b) { return checkSettings(fromUtf16(b)); }},
      {QStringLiteral("script file"), scripts, scriptWords, utf8,
       [](const QByteArray& b) { return checkScript(QString::fromUtf8(b)); }},
      {QStringLiteral("script text"), scripts, scriptWords, utf16,
       [](const QByteArray& b) { return checkScript(fromUtf16(b)); }},
  };
}

struct Tally {
  qint64 inputs = 0;
  qint64 bytes = 0;
  qint64 slowestMs = 0;
  qint64 slowestSize = 0;
};

} // namespace

class TestReaderFuzz final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void everyReaderAnswersAnyInput() {
    QTemporaryDir dir;
    const QList<Reader> all = readers(dir);
    for (const Reader& r : all)
      QVERIFY2(!r.seeds.isEmpty() && !r.seeds.contains(QString()), qPrintable(r.name + " has no seeds"));
    const int seconds = Fuzz::runSeconds();
    QRandomGenerator random(Fuzz::runSeed());
    Fuzz::Watchdog watchdog(InputLimitSeconds);
    QList<Tally> tallies(all.size());
    QElapsedTimer clock;
    clock.start();

    // Every seed as it is first, then mutants, one reader after another.
    QList<QPair<qsizetype, QByteArray>> plain;
    for (qsizetype r = 0; r < all.size(); ++r)
      for (const QString& seed : all[r].seeds)
        plain.append({r, all[r].encode(seed, random)});
    for (qint64 n = 0; n < plain.size() || clock.elapsed() < seconds * 1000LL; ++n) {
      const qsizetype r = n < plain.size() ? plain[n].first : n % all.size();
      const QByteArray input = n < plain.size() ? plain[n].second : makeInput(all[r], random);
      watchdog.begin(QStringLiteral("%1, input %2 (%3 bytes)").arg(all[r].name).arg(n).arg(input.size()));
      QElapsedTimer timer;
      timer.start();
      const QString failure = all[r].check(input);
      const qint64 ms = timer.elapsed();
      watchdog.end();
      if (!failure.isEmpty()) {
        writeFile(QStringLiteral("readerfuzz-failure.bin"), input);
        QFAIL(qPrintable(QStringLiteral("%1, input %2: %3 (the input is in readerfuzz-failure.bin)")
                             .arg(all[r].name)
                             .arg(n)
                             .arg(failure)));
      }
      Tally& t = tallies[r];
      ++t.inputs;
      t.bytes += input.size();
      if (ms > t.slowestMs) {
        t.slowestMs = ms;
        t.slowestSize = input.size();
      }
    }
    for (qsizetype r = 0; r < all.size(); ++r)
      std::printf("%-14s %8lld inputs, %6lld MB, slowest %lld ms for %lld bytes\n", qPrintable(all[r].name),
                  tallies[r].inputs, tallies[r].bytes >> 20, tallies[r].slowestMs, tallies[r].slowestSize);
  }
};

int main(int argc, char* argv[]) {
  Fuzz::allowLongRun();
  QCoreApplication app(argc, argv);
  TestReaderFuzz test;
  return QTest::qExec(&test, argc, argv);
}
#include "test_readerfuzz.moc"
