#pragma once

#include <QStringList>

// The few lexical questions script reading and the console ask about a statement's text.
namespace SqlWords {

// Characters of an unquoted Oracle name ($ and # included, as in V$SESSION and SERIAL#).
bool isNameChar(QChar c);

// Up to `count` leading words of text, upper-cased. Stops early at anything that is not a word
// or white space, so "CREATE TABLE T(" gives CREATE, TABLE, T.
QStringList leading(QStringView text, int count);

// The word starting at `from`, or empty when no name character is there.
QStringView wordAt(QStringView text, qsizetype from);

} // namespace SqlWords
