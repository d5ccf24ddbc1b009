#include "platform/RegistryFile.h"

namespace {

QString quote(const QString& text) {
  QString out;
  out.reserve(text.size() + 2);
  out += u'"';
  for (QChar c : text) {
    switch (c.unicode()) {
    case u'\\': out += u"\\\\"; break;
    case u'"': out += u"\\\""; break;
    case u'\n': out += u"\\n"; break;
    case u'\r': out += u"\\r"; break;
    default: out += c;
    }
  }
  out += u'"';
  return out;
}

// Reads a quoted text starting at pos (which must be a '"'); on success pos ends behind the
// closing quote.
std::optional<QString> unquote(const QString& line, qsizetype& pos) {
  if (pos >= line.size() || line[pos] != u'"')
    return std::nullopt;
  QString out;
  for (++pos; pos < line.size(); ++pos) {
    const QChar c = line[pos];
    if (c == u'"') {
      ++pos;
      return out;
    }
    if (c == u'\\' && pos + 1 < line.size()) {
      const QChar e = line[++pos];
      out += e == u'n' ? QChar(u'\n') : e == u'r' ? QChar(u'\r') : e;
    } else {
      out += c;
    }
  }
  return std::nullopt;
}

std::optional<RegValue> parseValue(const QString& line, qsizetype pos) {
  RegValue v;
  if (line.mid(pos).startsWith(u"dword:")) {
    bool ok = false;
    v.type = RegValue::Type::DWord;
    v.dword = line.mid(pos + 6).trimmed().toUInt(&ok, 16);
    return ok ? std::optional(v) : std::nullopt;
  }
  if (line.mid(pos).startsWith(u"expand:")) {
    v.type = RegValue::Type::ExpandText;
    pos += 7;
  }
  auto text = unquote(line, pos);
  if (!text || pos != line.size())
    return std::nullopt;
  v.text = *text;
  return v;
}

} // namespace

RegistryFile RegistryFile::parse(const QString& text) {
  RegistryFile file;
  const auto lines = text.split(u'\n');
  for (QString line : lines) {
    // Every CR before the LF goes: one kept in a kept line would be taken for the line end at
    // the next reading, and the file would change each time it is rewritten.
    while (line.endsWith(u'\r'))
      line.chop(1);
    if (line.isEmpty() || line.startsWith(u'[') || line.startsWith(u';'))
      continue;
    qsizetype pos = 0;
    auto name = unquote(line, pos);
    if (!name || pos >= line.size() || line[pos] != u'=')
      continue;
    Entry entry{*name, {}, {}};
    if (auto value = parseValue(line, pos + 1)) {
      entry.value = *value;
    } else {
      entry.value.type = RegValue::Type::Other;
      entry.line = line;
    }
    file.m_entries.append(entry);
  }
  return file;
}

QString RegistryFile::serialize(const QString& keyPath) const {
  QString out = u'[' + keyPath + QStringLiteral("]\n");
  for (const Entry& e : m_entries) {
    switch (e.value.type) {
    case RegValue::Type::Text: out += quote(e.name) + u'=' + quote(e.value.text); break;
    case RegValue::Type::ExpandText: out += quote(e.name) + QStringLiteral("=expand:") + quote(e.value.text); break;
    case RegValue::Type::DWord:
      out += quote(e.name) + QStringLiteral("=dword:%1").arg(e.value.dword, 8, 16, QChar(u'0'));
      break;
    case RegValue::Type::Other: out += e.line; break;
    }
    out += u'\n';
  }
  return out;
}

const RegistryFile::Entry* RegistryFile::find(const QString& name) const {
  for (const Entry& e : m_entries)
    if (e.name.compare(name, Qt::CaseInsensitive) == 0)
      return &e;
  return nullptr;
}

void RegistryFile::set(const QString& name, const QString& text) {
  // A value keeps the spelling of its name from the first time it was written.
  for (Entry& e : m_entries) {
    if (e.name.compare(name, Qt::CaseInsensitive) == 0) {
      e.value = RegValue{RegValue::Type::Text, text, 0};
      e.line.clear();
      return;
    }
  }
  m_entries.append(Entry{name, RegValue{RegValue::Type::Text, text, 0}, {}});
}

bool RegistryFile::remove(const QString& name) {
  return m_entries.removeIf([&](const Entry& e) { return e.name.compare(name, Qt::CaseInsensitive) == 0; }) > 0;
}
