#include "actions/TarnActionOptions.h"

namespace {
QString yesNo(bool value) {
    return value ? QStringLiteral("YES") : QStringLiteral("NO");
}
}  // namespace

QString TarnActionOptions::describe() const {
    QString text;
    text += QStringLiteral("%1 = %2\n").arg(QLatin1String(kAction), Action);
    text += QStringLiteral("%1 = %2\n")
                .arg(QLatin1String(kItems))
                .arg(items ? QString::number(items->size()) : QStringLiteral("(none)"));
    text += QStringLiteral("%1 = %2\n")
                .arg(QLatin1String(kDestination),
                     Destination.isNull() ? QStringLiteral("(none)") : Destination);
    text += QStringLiteral("%1 = %2\n")
                .arg(QLatin1String(kCreateProjectsFolders), yesNo(Create_projects_folders));
    text += QStringLiteral("%1 = %2\n")
                .arg(QLatin1String(kCreateMxfFolders), yesNo(Create_mxf_folders));
    text += QStringLiteral("%1 = %2\n")
                .arg(QLatin1String(kKeepOriginalFolders), yesNo(Keep_original_folders));
    text += QStringLiteral("%1 = %2\n").arg(QLatin1String(kKeepPmr), yesNo(Keep_pmr));
    text += QStringLiteral("%1 = %2\n").arg(QLatin1String(kImSure), yesNo(Im_sure));
    return text;
}
