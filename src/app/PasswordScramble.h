#pragma once

#include <QString>

// The stored form of the last logon's password. Character i (counting from 1) of the stored
// form is character i of the password moved i places forward; unscrambling moves it back. On
// ASCII text this is plain code arithmetic ("QTJL" is kept as "RVMP").
//
// The arithmetic works on Unicode scalar values, so a password of any script keeps one stored
// character per character, and the two routines are inverse for every text. A move steps
// through the scalar values U+0001..U+D7FF, U+E000..U+10FFFF in order: it jumps over the
// surrogate block and wraps from U+10FFFF round to U+0001 (and back the other way), so the
// stored form is always valid UTF-16 and UTF-8. U+0000 is not part of that cycle and stays as
// it is: the settings store cuts a value at its first NUL, so a scrambled password must never
// gain one. A lone surrogate is not a character; it is read as U+FFFD, as every conversion of
// ill-formed text does.
QString ScramblePassword(const QString& p);
QString UnscramblePassword(const QString& s);
