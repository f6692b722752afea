#pragma once

#include <QString>

#include <atomic>
#include <memory>

// One row of the project summary: a project's name, how many shown items it
// has and their size, and the check mark that includes or excludes the whole
// project from the view.
class TarnProject {
  public:
    TarnProject() = default;
    explicit TarnProject(const QString& name) : name(name) {}

    // Equal names (or both without one) make equal projects.
    bool isEqual(const TarnProject& other) const;
    size_t hash() const;

    std::atomic<bool> mustBeShownInList{true};
    quint32 FilesCount = 0;
    QString name;
    quint64 SizeValue = 0;
};

using TarnProjectPtr = std::shared_ptr<TarnProject>;
