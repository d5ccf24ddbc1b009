#pragma once

#include <QDateTime>
#include <QString>

// The texts of the result list's lines, the same for every job and both windows.
namespace ResultLineText {

// Colour codes: banners, date lines, a table's success and failure, the end of a rollback or
// commit. An empty code leaves the default colours.
inline const QString Banner = QStringLiteral("GR");
inline const QString StartTime = QStringLiteral("BY");
inline const QString CountEndTime = QStringLiteral("by");
inline const QString EndTime = QStringLiteral("BY");
inline const QString CountSuccess = QStringLiteral("cd");
inline const QString Success = QStringLiteral("CD");
inline const QString Failure = QStringLiteral("RD");
inline const QString RolledBack = QStringLiteral("MD");
inline const QString Committed = QStringLiteral("GD");

inline const QString CountStartBanner = QStringLiteral("＝＝＝件数カウント開始＝＝＝");
inline const QString CountEndBanner = QStringLiteral("＝＝＝件数カウント終了＝＝＝");
inline const QString DeleteStartBanner = QStringLiteral("＝＝＝＝＝削除開始＝＝＝＝＝");
inline const QString DeleteEndBanner = QStringLiteral("＝＝＝＝＝削除終了＝＝＝＝＝");
inline const QString DropStartBanner = QStringLiteral("＝＝＝＝＝Drop開始＝＝＝＝＝");
inline const QString DropEndBanner = QStringLiteral("＝＝＝＝＝Drop終了＝＝＝＝＝");
inline const QString FileOutputStartBanner = QStringLiteral("＝＝＝ファイル出力開始＝＝＝");
inline const QString FileOutputEndBanner = QStringLiteral("＝＝＝ファイル出力終了＝＝＝");
inline const QString RollbackDone = QStringLiteral("＝＝＝ロールバック完了＝＝＝");
inline const QString CommitDone = QStringLiteral("＝＝＝＝コミット完了＝＝＝＝");

// "開始: 2026/01/05 09:00:00" and "終了: …", with "/" and ":" whatever the locale.
QString StartLine(const QDateTime& when);
QString EndLine(const QDateTime& when);
// "所要時間(Sec) " and the elapsed time in its shortest decimal form, in a field of 8.
QString ElapsedLine(double elapsed);

// 1234567 → "1,234,567": thousands separated by commas, at least one digit.
QString Thousands(qint64 n);

// The table's field: its ID padded or cut to 16 characters.
QString TableField(const QString& id);
// A count right-aligned in 10 characters ("#,###,##0件"); longer counts lose their leading
// characters.
QString CountField(qint64 count);
// A statement that returns no count: "      OK".
QString OkField();
// "Err" and the error number right-aligned in 5 characters, cut to its last five digits.
QString ErrorField(int number);

QString CountLine(const QString& id, qint64 count, const QString& name);
QString OkLine(const QString& id, const QString& name);
QString FailureLine(const QString& id, int number, const QString& name);

} // namespace ResultLineText
