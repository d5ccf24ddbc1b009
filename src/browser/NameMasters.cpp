#include "browser/NameMasters.h"

#include "settings/RegSetting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <optional>

namespace {

bool isBlank(QChar c) { return c == u' ' || c == u'\t'; }
bool isLineEnd(QChar c) { return c == u'\r' || c == u'\n'; }

// Only spaces and tabs go: an ideographic space inside a Japanese name is part of the name.
QStringView trimBlanks(QStringView s) {
  qsizetype begin = 0;
  qsizetype end = s.size();
  while (begin < end && isBlank(s[begin]))
    ++begin;
  while (end > begin && isBlank(s[end - 1]))
    --end;
  return s.sliced(begin, end - begin);
}

// Hands out the fields of list-input text one at a time.
class FieldReader final {
public:
  explicit FieldReader(QStringView text) : m_text(text) {}

  // The next field, or nothing when the text holds no more. A field right after a comma always
  // exists, even at the end of the text; a field that would start a line skips blank lines first.
  std::optional<QString> next() {
    const qsizetype n = m_text.size();
    if (!m_afterComma) {
      for (;;) {
        qsizetype p = m_pos;
        while (p < n && isBlank(m_text[p]))
          ++p;
        if (p >= n)
          return std::nullopt;
        if (!isLineEnd(m_text[p]))
          break;
        m_pos = p;
        skipLineEnd();
      }
    }
    m_afterComma = false;
    while (m_pos < n && isBlank(m_text[m_pos]))
      ++m_pos;

    QString value;
    if (m_pos < n && m_text[m_pos] == u'"') {
      const qsizetype start = m_pos + 1;
      qsizetype close = m_text.indexOf(u'"', start);
      if (close < 0)
        close = n;
      value = m_text.sliced(start, close - start).toString();
      m_pos = qMin(close + 1, n);
      // Whatever stands between the closing quote and the delimiter is not part of any field.
      while (m_pos < n && m_text[m_pos] != u',' && !isLineEnd(m_text[m_pos]))
        ++m_pos;
    } else {
      const qsizetype start = m_pos;
      while (m_pos < n && m_text[m_pos] != u',' && !isLineEnd(m_text[m_pos]))
        ++m_pos;
      value = trimBlanks(m_text.sliced(start, m_pos - start)).toString();
    }

    if (m_pos < n) {
      if (m_text[m_pos] == u',') {
        ++m_pos;
        m_afterComma = true;
      } else {
        skipLineEnd();
      }
    }
    return value;
  }

private:
  void skipLineEnd() {
    if (m_text[m_pos] == u'\r' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == u'\n')
      ++m_pos;
    ++m_pos;
  }

  QStringView m_text;
  qsizetype m_pos = 0;
  bool m_afterComma = false;
};

// The files are written by hand or exported from a spreadsheet, so they come in the Japanese
// ANSI code page or in UTF-8. Text that is valid UTF-8 is taken as UTF-8: Shift_JIS text with
// any Japanese in it almost never is.
QString decodeMasterText(const QByteArray& bytes) {
  static constexpr QByteArrayView utf8Bom("\xEF\xBB\xBF");
  if (bytes.startsWith(utf8Bom)) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    return utf8.decode(QByteArrayView(bytes).sliced(utf8Bom.size()));
  }
  // Stateless, so that a sequence cut off at the end of the file counts as an error too.
  QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  QString text = utf8.decode(bytes);
  if (!utf8.hasError())
    return text;
  QStringDecoder ansi("windows-31j", QStringDecoder::Flag::Stateless);
  return ansi.decode(bytes);
}

void loadFirstFound(NameMasterFile& master, const QString& fileName, const QStringList& folders) {
  for (const QString& folder : folders) {
    if (folder.isEmpty())
      continue;
    const QString path = QDir(folder).filePath(fileName);
    if (QFileInfo(path).isFile()) {
      master.load(path);
      return;
    }
  }
  master.clear();
}

} // namespace

QString NameMasterFile::id(int index) const { return index >= 1 && index <= count() ? m_ids[index - 1] : QString(); }

QString NameMasterFile::name(int index) const {
  return index >= 1 && index <= count() ? m_names[index - 1] : QString();
}

QString NameMasterFile::lookup(const QString& id) const {
  const auto found = m_firstIndex.constFind(id);
  return found == m_firstIndex.constEnd() ? id : m_names[*found];
}

void NameMasterFile::clear() {
  m_ids.clear();
  m_names.clear();
  m_firstIndex.clear();
}

void NameMasterFile::load(const QString& path) {
  clear();
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return;
  const QByteArray bytes = file.readAll();
  parse(decodeMasterText(bytes));
}

void NameMasterFile::parse(QStringView text) {
  clear();
  FieldReader reader(text);
  while (const std::optional<QString> id = reader.next()) {
    const std::optional<QString> name = reader.next();
    if (!name)
      break;
    // A later record of the same ID is kept in the list but never found.
    if (!m_firstIndex.contains(*id))
      m_firstIndex.insert(*id, int(m_ids.size()));
    m_ids.append(*id);
    m_names.append(*name);
  }
}

namespace {

QString readMasterSetting(clsREG& registry, const QString& key, const QString& def) {
  return RegSetting(registry, QStringLiteral("R"), QStringLiteral("JVK"), key, def);
}

} // namespace

MasterTable TableMasterSettings(clsREG& registry) {
  return {readMasterSetting(registry, QStringLiteral("TBLM"), QStringLiteral("TBTBLM")),
          readMasterSetting(registry, QStringLiteral("TBLNM"), QStringLiteral("TBL_NM")),
          readMasterSetting(registry, QStringLiteral("TBLID"), QStringLiteral("TBL_ID"))};
}

MasterTable ColumnMasterSettings(clsREG& registry) {
  return {readMasterSetting(registry, QStringLiteral("CLMM"), QStringLiteral("TBCLMM")),
          readMasterSetting(registry, QStringLiteral("CLMNM"), QStringLiteral("CLM_NM")),
          readMasterSetting(registry, QStringLiteral("CLMID"), QStringLiteral("CLM_ID"))};
}

void LoadNameMasters(NameMasters& masters, clsREG& registry, const QStringList& folders) {
  // The files are named after the master tables.
  loadFirstFound(masters.tables, TableMasterSettings(registry).table + QStringLiteral(".dat"), folders);
  loadFirstFound(masters.columns, ColumnMasterSettings(registry).table + QStringLiteral(".dat"), folders);
}

QString TableDisplayName(const NameMasters& masters, const QString& id) { return masters.tables.lookup(id); }

QString ColumnDisplayName(const NameMasters& masters, const QString& id) { return masters.columns.lookup(id); }
