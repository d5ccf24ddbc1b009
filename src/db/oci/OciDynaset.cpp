#include "db/oci/OciDynaset.h"

#include "db/oci/OciText.h"

#include <algorithm>
#include <limits>

using namespace oci;

namespace {

const OraError OutOfSequence(1002, QStringLiteral("fetch out of sequence"));

} // namespace

OciDynaset::OciDynaset(std::shared_ptr<OciConnection> connection, int options)
    : m_connection(std::move(connection)), m_options(options) {}

OciDynaset::~OciDynaset() { releaseLocators(); }

std::unique_ptr<OciDynaset> OciDynaset::open(std::shared_ptr<OciConnection> connection, const QString& sql,
                                             int options) {
  std::unique_ptr<OciDynaset> rows(new OciDynaset(connection, options));
  rows->m_sql = sql;
  if ((options & (ReadOnly | NoCache)) == 0) {
    // The ROWID of a query over one table can be read through an inline view, whatever its
    // select list; a query it cannot follow (a join, DISTINCT, GROUP BY …) still opens, read-only.
    try {
      rows->start(QStringLiteral("SELECT ROWID, q.* FROM (%1) q").arg(sql), true);
      return rows;
    } catch (const OraError& e) {
      if (e.number() == 0 || OciText::sessionLost(e.number()))
        throw;
      rows->m_notUpdatable = e;
    }
  }
  rows->start(sql, false);
  return rows;
}

void OciDynaset::start(const QString& sql, bool withRowid) {
  m_statement.reset();
  m_statement = std::make_unique<OciStatement>(*m_connection, sql);
  if (m_statement->type() != STMT_SELECT)
    throw OraError(24333, QStringLiteral("zero iteration count"));
  ub4 prefetch = ub4(m_connection->options().fetchRows);
  m_connection->check(m_connection->api().AttrSet(m_statement->handle(), HTYPE_STMT, &prefetch, 0, ATTR_PREFETCH_ROWS,
                                                  m_connection->errors()));
  m_statement->execute(0);
  m_hidden = withRowid ? 1 : 0;
  describe();
  define();
}

void OciDynaset::describe() {
  const Api& api = m_connection->api();
  const ub4 count = m_statement->attribute<ub4>(ATTR_PARAM_COUNT);
  m_columns.assign(count, Column{});
  m_names.clear();
  const qint64 longBytes = m_connection->options().longBytes;
  for (ub4 i = 0; i < count; ++i) {
    void* param = nullptr;
    m_connection->check(api.ParamGet(m_statement->handle(), HTYPE_STMT, m_connection->errors(), &param, i + 1));
    ub2 type = 0;
    ub2 size = 0;
    ub2 chars = 0;
    OraText* name = nullptr;
    ub4 nameLength = 0;
    const auto get = [&](void* target, ub4* length, ub4 attr) {
      m_connection->check(api.AttrGet(param, DTYPE_PARAM, target, length, attr, m_connection->errors()));
    };
    ub1 form = SQLCS_IMPLICIT;
    try {
      get(&type, nullptr, ATTR_DATA_TYPE);
      get(&size, nullptr, ATTR_DATA_SIZE);
      get(&chars, nullptr, ATTR_CHAR_SIZE);
      get(&name, &nameLength, ATTR_NAME);
      if (type == SQLT_CLOB)
        get(&form, nullptr, ATTR_CHARSET_FORM);
    } catch (...) {
      api.DescriptorFree(param, DTYPE_PARAM);
      throw;
    }
    const QString label = QString::fromUtf8(reinterpret_cast<const char*>(name), nameLength);
    api.DescriptorFree(param, DTYPE_PARAM);

    Column& c = m_columns[i];
    c.charsetForm = form;
    switch (type) {
    case SQLT_NUM:
    case SQLT_INT:
    case SQLT_FLT:
    case SQLT_BFLOAT:
    case SQLT_BDOUBLE:
    case SQLT_IBFLOAT:
    case SQLT_IBDOUBLE:
      c.kind = Kind::Number;
      c.capacity = 64; // 40 digits, sign, decimal sign and exponent
      break;
    case SQLT_DAT:
      c.kind = Kind::Date;
      c.capacity = 32;
      break;
    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_TIMESTAMP_LTZ:
    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS: c.capacity = 96; break;
    case SQLT_LNG:
      c.defineType = SQLT_LNG;
      c.capacity = longBytes;
      break;
    case SQLT_LBI:
      c.kind = Kind::Bytes;
      c.defineType = SQLT_LBI;
      c.capacity = longBytes;
      break;
    case SQLT_CLOB:
    case SQLT_BLOB:
      // Read through locators, whatever their size; the session's LOB prefetch brings the
      // data of most with the rows.
      c.kind = type == SQLT_BLOB ? Kind::Bytes : Kind::Text;
      c.defineType = type;
      c.capacity = sizeof(OCILobLocator*);
      break;
    case SQLT_BIN:
      c.kind = Kind::Bytes;
      c.defineType = SQLT_BIN;
      c.capacity = std::max<qint64>(size, 1);
      break;
    default:
      // Character data grows up to four times on its way to UTF-8; other types (ROWID and
      // what the server can turn into text) fit in 4000 characters.
      c.capacity = type == SQLT_CHR || type == SQLT_AFC ? std::max<qint64>(std::max<qint64>(size, chars), 1) * 4 : 4000;
      break;
    }
    if (i >= ub4(m_hidden))
      m_names.append(label);
  }
}

void OciDynaset::define() {
  const auto& options = m_connection->options();
  qint64 rowBytes = 0;
  for (const Column& c : m_columns) {
    const bool lob = c.defineType == SQLT_CLOB || c.defineType == SQLT_BLOB;
    rowBytes += (lob ? options.lobPrefetchBytes : c.capacity) + qint64(sizeof(sb2) + sizeof(ub4) + sizeof(ub2));
  }
  m_batchRows = int(std::clamp<qint64>(options.fetchBytes / std::max<qint64>(rowBytes, 1), 1, options.fetchRows));
  for (size_t i = 0; i < m_columns.size(); ++i) {
    Column& c = m_columns[i];
    c.data.assign(size_t(c.capacity) * size_t(m_batchRows), 0);
    c.indicators.assign(size_t(m_batchRows), 0);
    c.lengths.assign(size_t(m_batchRows), 0);
    c.codes.assign(size_t(m_batchRows), 0);
    void* target = c.data.data();
    if (c.defineType == SQLT_CLOB || c.defineType == SQLT_BLOB) {
      c.data.clear();
      c.locators.assign(size_t(m_batchRows), nullptr);
      for (OCILobLocator*& locator : c.locators)
        if (m_connection->api().DescriptorAlloc(m_connection->environment(), reinterpret_cast<void**>(&locator),
                                                DTYPE_LOB, 0, nullptr) != SUCCESS)
          throw OraError(0, QStringLiteral("The Oracle client could not allocate a LOB locator."));
      target = c.locators.data();
    }
    OCIDefine* define = nullptr;
    m_connection->check(m_connection->api().DefineByPos2(
        m_statement->handle(), &define, m_connection->errors(), ub4(i + 1), target, c.capacity, c.defineType,
        c.indicators.data(), c.lengths.data(), c.codes.data(), DEFAULT));
  }
}

void OciDynaset::releaseLocators() {
  for (Column& c : m_columns) {
    for (OCILobLocator* locator : c.locators)
      if (locator)
        m_connection->api().DescriptorFree(locator, DTYPE_LOB);
    c.locators.clear();
  }
}

QVariant OciDynaset::lobValue(const Column& c, int row) {
  const Api& api = m_connection->api();
  OCILobLocator* locator = c.locators[size_t(row)];
  ub8 length = 0; // characters of a CLOB, bytes of a BLOB
  m_connection->check(api.LobGetLength2(m_connection->service(), m_connection->errors(), locator, &length));
  const bool text = c.kind == Kind::Text;
  const ub8 room = text ? length * 4 : length; // a character takes up to four bytes in UTF-8
  if (room > ub8(std::numeric_limits<int>::max() - 1))
    throw OraError(0, QStringLiteral("A LOB of %1 %2 is too large to read at once.")
                          .arg(length)
                          .arg(text ? QStringLiteral("characters") : QStringLiteral("bytes")));
  QByteArray buffer(qsizetype(room), Qt::Uninitialized);
  ub8 bytes = text ? 0 : length;
  ub8 characters = text ? length : 0;
  if (length > 0)
    m_connection->check(api.LobRead2(m_connection->service(), m_connection->errors(), locator, &bytes, &characters, 1,
                                     buffer.data(), room, ONE_PIECE, nullptr, nullptr, 0, c.charsetForm));
  buffer.truncate(qsizetype(std::min(bytes, room)));
  return text ? QVariant(QString::fromUtf8(buffer)) : QVariant(buffer);
}

QVariant OciDynaset::value(const Column& c, int row) {
  if (c.indicators[size_t(row)] == IND_NULL)
    return {};
  if (!c.locators.empty())
    return lobValue(c, row);
  const char* bytes = c.data.data() + qint64(row) * c.capacity;
  const qsizetype length = qsizetype(std::min<qint64>(c.lengths[size_t(row)], c.capacity));
  switch (c.kind) {
  case Kind::Number: return OciText::number(QByteArrayView(bytes, length));
  case Kind::Date: return OciText::date(QByteArrayView(bytes, length));
  case Kind::Bytes: return QByteArray(bytes, length);
  case Kind::Text: break;
  }
  return QString::fromUtf8(bytes, length);
}

void OciDynaset::finish() {
  m_done = true;
  m_statement.reset(); // gives the cursor back to the server
}

void OciDynaset::fetchBatch() {
  const OciConnection::Call call(*m_connection);
  const sword status = m_connection->api().StmtFetch2(m_statement->handle(), m_connection->errors(), ub4(m_batchRows),
                                                      FETCH_NEXT, 0, DEFAULT);
  std::optional<OraError> error = m_connection->failure(status);
  // The rows before an error, and those of the last batch that comes with OCI_NO_DATA, are in
  // the buffers all the same.
  const ub4 fetched = m_connection->lost() ? 0 : m_statement->attribute<ub4>(ATTR_ROWS_FETCHED);
  if ((m_options & NoCache) && !m_rows.empty()) {
    m_first += qint64(m_rows.size());
    m_rows.clear();
  }
  try {
    for (ub4 r = 0; r < fetched; ++r) {
      QVariantList row;
      row.reserve(qsizetype(m_columns.size()));
      for (const Column& c : m_columns) {
        // A LONG beyond its buffer would read as a different value: the rows stop there.
        if ((c.defineType == SQLT_LNG || c.defineType == SQLT_LBI) && c.codes[r] == 1406)
          throw OraError(1406, QStringLiteral("fetched column value was truncated (LONG values are read up to %1 "
                                              "bytes)")
                                   .arg(c.capacity));
        row << value(c, int(r));
      }
      m_rows.push_back(std::move(row));
    }
  } catch (const OraError& e) {
    error = e;
  }
  if (error || status == NO_DATA)
    finish();
  // Raised when a row past the ones delivered is wanted: those before it read as they came.
  m_fetchError = std::move(error);
}

bool OciDynaset::fetchTo(qint64 row) {
  while (!m_done && row >= m_first + qint64(m_rows.size()))
    fetchBatch();
  const bool there = row >= m_first && row < m_first + qint64(m_rows.size());
  if (!there && m_fetchError)
    throw *m_fetchError;
  return there;
}

const QVariantList& OciDynaset::current() {
  m_connection->checkAlive();
  if (m_closed || !fetchTo(m_pos))
    throw OutOfSequence;
  return m_rows[size_t(m_pos - m_first)];
}

qint64 OciDynaset::countOnServer() {
  // The execute brings the single row with it: one round trip. The dynaset's own cursor is
  // another statement and stays where it is.
  OciStatement count(*m_connection, QStringLiteral("SELECT COUNT(*) FROM (%1)").arg(m_sql));
  char digits[64] = {};
  ub4 length = 0;
  OCIDefine* define = nullptr;
  m_connection->check(m_connection->api().DefineByPos2(count.handle(), &define, m_connection->errors(), 1, digits,
                                                       sizeof digits, SQLT_CHR, nullptr, &length, nullptr, DEFAULT));
  count.execute(1);
  return OciText::number(QByteArrayView(digits, std::min<qsizetype>(length, sizeof digits))).toLongLong();
}

qint64 OciDynaset::RecordCount() {
  m_connection->checkAlive();
  if (m_count >= 0)
    return m_count;
  if (m_closed)
    throw OutOfSequence;
  if ((m_options & NoCache) && !m_done) {
    // Reading to the end would cost a round trip per batch and drop the rows on the way.
    m_count = countOnServer();
    return m_count;
  }
  fetchTo(std::numeric_limits<qint64>::max());
  m_count = m_first + qint64(m_rows.size());
  return m_count;
}

QVariant OciDynaset::Fields(int index) {
  m_names.check(index);
  return current()[index + m_hidden];
}

void OciDynaset::MoveNext() {
  if (m_pos < m_first + qint64(m_rows.size()) || !m_done)
    ++m_pos;
}

bool OciDynaset::IsEOF() {
  m_connection->checkAlive();
  if (m_closed)
    return true;
  return !fetchTo(m_pos); // a failed fetch raises its error rather than look like the end
}

void OciDynaset::Delete() {
  if (m_notUpdatable)
    throw *m_notUpdatable;
  if (!m_hidden)
    throw OraError(1732, QStringLiteral("data manipulation operation not legal on this view"));
  QByteArray rowid = current()[0].toString().toUtf8();
  if (!m_delete)
    m_delete =
        std::make_unique<OciStatement>(*m_connection, QStringLiteral("DELETE FROM (%1) WHERE ROWID = :1").arg(m_sql));
  OCIBind* bind = nullptr;
  m_connection->check(m_connection->api().BindByPos(m_delete->handle(), &bind, m_connection->errors(), 1, rowid.data(),
                                                    sb4(rowid.size() + 1), SQLT_STR, nullptr, nullptr, nullptr, 0,
                                                    nullptr, DEFAULT));
  m_delete->execute(1);
}

void OciDynaset::Close() {
  releaseLocators();
  m_statement.reset();
  m_delete.reset();
  m_rows.clear();
  m_closed = true;
}
