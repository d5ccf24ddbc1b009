#pragma once

class QString;
class QWidget;
struct DbEnvironment;

// Builds local:demo before its first logon, while a progress dialog over parent shows that
// something happens: the build takes a few seconds, and a blank window would look hung. Does
// nothing for any other host or when the demo is already there. A build that fails is left to
// the logon, which tries again and reports the failure the way every failed logon is reported.
void BuildDemoWithProgress(const QString& host, const DbEnvironment& env, QWidget* parent);
