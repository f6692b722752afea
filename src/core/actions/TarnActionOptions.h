#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

#include "items/TarnDatabaseItem.h"

// The options of one action: what the new-action dialog edits, the queue
// receives and the engine reads. The dialog starts from these defaults.
//
// Absent values are kept apart from present ones where the engine cares: an
// action without "items" does nothing, and a null destination is "absent".
class TarnActionOptions {
  public:
    // The option names as the dialog and the log know them.
    static constexpr const char* kAction = "Action";
    static constexpr const char* kItems = "items";
    static constexpr const char* kDestination = "Destination";
    static constexpr const char* kCreateProjectsFolders = "Create_projects_folders";
    static constexpr const char* kCreateMxfFolders = "Create_mxf_folders";
    static constexpr const char* kKeepOriginalFolders = "Keep_original_folders";
    static constexpr const char* kKeepPmr = "Keep_pmr";
    static constexpr const char* kImSure = "Im_sure";

    // The three action words.
    static QString copyWord() { return QStringLiteral("Copy"); }
    static QString moveWord() { return QStringLiteral("Move"); }
    static QString deleteWord() { return QStringLiteral("Delete"); }

    TarnActionOptions() = default;
    // The dialog's defaults for a selection.
    explicit TarnActionOptions(const QList<TarnItemPtr>& selection) : items(selection) {}

    bool isCopy() const { return Action == copyWord(); }
    bool isMove() const { return Action == moveWord(); }
    bool isDelete() const { return Action == deleteWord(); }

    // The options as "key = value" lines (what a plan or a log shows).
    QString describe() const;

    QString Action = copyWord();
    std::optional<QList<TarnItemPtr>> items;
    QString Destination = QStringLiteral("Unknown");  // null: absent
    bool Create_projects_folders = true;
    bool Create_mxf_folders = true;
    bool Keep_original_folders = false;
    bool Keep_pmr = false;  // recorded only; the engine does not read it
    bool Im_sure = false;
    // The media folder roots of the scan that found the items (the core's
    // TarnCore::mediaFolderRoots()). Copy, move and delete act only on
    // regular files inside one of them; with none, on nothing.
    QStringList mediaFolderRoots;
};
