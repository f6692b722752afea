#pragma once

#include <QAbstractTableModel>
#include <QList>

#include "actions/TarnDatabaseFiles.h"

// The rows of the database window: one check-box row per media index or
// media database file, in one column ("Col1", header "Items"), none ticked
// at first. The row text is the file name, size and date over its folder.
class TarnDatabaseFilesModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    using QAbstractTableModel::QAbstractTableModel;

    static QString columnIdentifier() { return QStringLiteral("Col1"); }

    // New rows, all unticked.
    void setFiles(const QList<TarnDatabaseFiles::Entry>& files);
    const QList<TarnDatabaseFiles::Entry>& files() const { return files_; }
    QList<TarnDatabaseFiles::Entry> tickedFiles() const;
    int tickedCount() const;
    void setAllTicked(bool ticked);

    static QString rowText(const TarnDatabaseFiles::Entry& file);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  signals:
    void tickedCountChanged(int count);

  private:
    QList<TarnDatabaseFiles::Entry> files_;
    QList<bool> ticked_;
};
