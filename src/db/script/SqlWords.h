#pragma once

#include <QStringList>

// The few lexical questions script reading and the console ask about a statement's text.
namespace SqlWords {

// Characters of an unquoted Oracle name ($ and # included, as in V$SESSION and SERIAL#).
bool isNameChar(QChar c);

// Up to `count` leading words of text, upper-cased. Stops early at anything that is not a word
// or white space, so "CREATE TABLE T(" gives CREATE, TABLE, T.
QStringList leading(QStringView text, int count);

// leading() in steps, for text that grows: appends the words from `from` on to words, and returns
// where it stopped (after the count-th word, at something that is no word, or at the end of the
// text). When it stopped at the end, a later call for the text grown by whole lines goes on from
// there.
qsizetype readLeading(QStringView text, qsizetype from, int count, QStringList& words);

// The word starting at `from`, or empty when no name character is there.
QStringView wordAt(QStringView text, qsizetype from);

} // namespace SqlWords
