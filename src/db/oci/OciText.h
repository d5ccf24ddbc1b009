#pragma once

#include <QByteArrayView>
#include <QString>
#include <QVariant>

// How the text Oracle sends becomes the values every reader sees, the same whichever backend
// answered: the session's NLS settings fix the forms, these functions finish the job.
namespace OciText {

// The session settings sent right after logon: DATE as "YYYY/MM/DD HH24:MI:SS" and '.' as the
// decimal sign, whatever the server or the client's environment would choose.
QString sessionSettingsSql();

// A NUMBER (or BINARY_FLOAT/DOUBLE) in the session's text form. Whole numbers that fit become
// qint64; every other value stays the text Oracle wrote (".5"), so no digit is lost.
QVariant number(QByteArrayView text);
// A DATE in the session's form; midnight drops its time part, as the embedded engine shows it.
QString date(QByteArrayView text);

// The release number out of OCIServerVersion's banner: the "Version" line of 18c and later
// ("19.3.0.0.0"), else the number after "Release".
QString releaseFromBanner(const QString& banner);
// An OCIErrorGet message without its "ORA-nnnnn: " prefix and trailing line break.
QString errorText(QString message, int code);
// Errors after which the session is gone and no further call can succeed.
bool sessionLost(int code);

} // namespace OciText
