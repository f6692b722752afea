#pragma once

#include <QString>

// Small helpers shared by the readers, the table and the actions.
class TarnUtilities {
  public:
    // "My%20Clip.mxf" -> "My Clip.mxf"; text without escapes is returned as is,
    // and so is a "%" without two hex digits after it ("100%.mxf").
    static QString stringByRemovingPercentEncoding(const QString& text);
    // "v0.9.0 build 1": the version text shown by the app and `tarn --version`.
    static QString versionText();
};
