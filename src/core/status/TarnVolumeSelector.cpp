#include "status/TarnVolumeSelector.h"

TarnVolumeSelector::TarnVolumeSelector(const QStringList& volumes)
    : volumes_(volumes), checks_(volumes.size(), true) {}

QString TarnVolumeSelector::volumeAt(int row) const {
    return row >= 0 && row < volumes_.size() ? volumes_.at(row) : QString();
}

bool TarnVolumeSelector::checkAt(int row) const {
    return row >= 0 && row < checks_.size() && checks_.at(row);
}

void TarnVolumeSelector::setCheck(int row, bool checked) {
    if (row >= 0 && row < checks_.size()) checks_[row] = checked;
}

QString TarnVolumeSelector::delectDeselectAll(bool state) {
    for (auto& check : checks_) check = state;
    return selectAllTitle(state);
}

QString TarnVolumeSelector::selectAllTitle(bool state) {
    return state ? QStringLiteral("Deselect all") : QStringLiteral("Select all");
}

QStringList TarnVolumeSelector::createResultingArray() const {
    QStringList chosen;
    for (int i = 0; i < volumes_.size(); ++i)
        if (checks_.at(i)) chosen << volumes_.at(i);
    return chosen;
}
