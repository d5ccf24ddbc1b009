#pragma once

#include "db/local/OracleDateTime.h"
#include "db/local/WideNumbers.h"

// What ALTER SESSION sets for one session and the engine's functions read: the date format in
// which dates become text and texts become dates. Until a session sets one, dates read in the
// stored form with a midnight time left out, and texts are read in that form. The functions also
// keep the digits of the wide numbers the session's statement computes here.
struct SessionSettings final {
  QString dateFormat;
  mutable WideNumbers wideNumbers;

  QString dateText(const OracleDateTime::DateTime& d) const {
    return dateFormat.isEmpty() ? OracleDateTime::defaultText(d) : OracleDateTime::format(d, dateFormat);
  }
  QString dateModel() const { return dateFormat.isEmpty() ? OracleDateTime::DefaultModel.toString() : dateFormat; }
  // A text as a DATE: in the stored form, else read in the session's format.
  OracleDateTime::DateTime date(const QString& text) const {
    if (const auto stored = OracleDateTime::parseStored(text))
      return *stored;
    return OracleDateTime::parse(text, dateModel(), QDate::currentDate());
  }
};
