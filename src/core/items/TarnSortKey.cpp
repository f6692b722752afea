#include "items/TarnSortKey.h"

namespace {

constexpr struct {
    TarnSortKey key;
    const char* name;
} kKeys[] = {
    {TarnSortKey::FileName, "filename"},
    {TarnSortKey::ClipName, "clipname"},
    {TarnSortKey::Path, "path"},
    {TarnSortKey::Project, "project"},
    {TarnSortKey::FileUID, "fileUID"},
    {TarnSortKey::MaterialUID, "materialUID"},
    {TarnSortKey::Compression, "compression"},
    {TarnSortKey::FrameRate, "framerate"},
    {TarnSortKey::SampleRate, "samplerate"},
    {TarnSortKey::Bits, "bits"},
    {TarnSortKey::FileSize, "filesize"},
    {TarnSortKey::FileDate, "filedate"},
    {TarnSortKey::Hash, "hash"},
};

}  // namespace

const QList<TarnSortKey>& TarnSortKeys::all() {
    static const QList<TarnSortKey> keys = [] {
        QList<TarnSortKey> list;
        for (const auto& k : kKeys) list.append(k.key);
        return list;
    }();
    return keys;
}

QString TarnSortKeys::name(TarnSortKey key) {
    for (const auto& k : kKeys) {
        if (k.key == key) return QString::fromLatin1(k.name);
    }
    return QString();
}

std::optional<TarnSortKey> TarnSortKeys::fromName(const QString& name) {
    for (const auto& k : kKeys) {
        if (name == QLatin1String(k.name)) return k.key;
    }
    return std::nullopt;
}
