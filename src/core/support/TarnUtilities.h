#pragma once

#include <QString>

// Small helpers shared by the readers, the table and the actions.
class TarnUtilities {
  public:
    // "My%20Clip.mxf" -> "My Clip.mxf"; text without escapes is returned as is,
    // and so is a "%" without two hex digits after it ("100%.mxf").
    static QString stringByRemovingPercentEncoding(const QString& text);
    // A leading "~" becomes the home folder, "~user" that user's home folder
    // ("~/x" -> "/home/me/x"); an unknown user or a "~" elsewhere stays as is.
    static QString stringByExpandingTildeInPath(const QString& path);
    // A folder as a user typed it, made a path that compares: tilde expanded,
    // percent escapes removed, relative to the current folder made absolute,
    // "." and ".." and repeated or trailing separators resolved in the text
    // (links are not followed). Null stays null, empty stays empty.
    static QString absoluteFolderPath(const QString& typed);
    // "v0.9.0 build 1": the version text shown by the app and `tarn --version`.
    static QString versionText();
};
