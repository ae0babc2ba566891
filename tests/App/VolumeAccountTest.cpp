#include "App/DashboardScene.h"

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

class VolumeAccountLine : public DashboardScene {
protected:
    /// The line below the kinds after a breakdown with this account.
    QString line(const std::optional<VolumeAccount>& account, const SharedUnreadPlaces& unread = {})
    {
        dashboard.analyze(FileUrl{"/"});
        analyses.send({2, FolderSummary{{videos}, 30, 2}, Progress::Phase::done, {}, unread, account});
        analyses.end();
        EXPECT_TRUE(
            waitUntil(&dashboard, &FolderTool::stateChanged, [this] { return !dashboard.isScanning(); }));
        return texts().filter(QStringLiteral("sur le volume")).join(u'\n').replace(QChar::Nbsp, u' ');
    }
};

TEST_F(VolumeAccountLine, SaysWhatIsKnownOfTheGapAndNothingElse)
{
    const auto unread = std::make_shared<UnreadPlaces>(UnreadPlaces{12, false, {}});
    EXPECT_EQ(line(VolumeAccount{26 * gigabyte, gigabyte, 20 * gigabyte, 3 * gigabyte, 2}, unread),
              QStringLiteral("Utilisés sur le volume : 26 Go · analysés : 20 Go · réservés au système : 1 Go"
                             " · hors de portée : 5 Go (12 dossiers illisibles, 2 dossiers de versions non "
                             "ouverts, fichiers supprimés encore ouverts…)"
                             " · en plus, sous d’autres points de montage : 3 Go"));
    EXPECT_EQ(line(VolumeAccount{.used = 5 * gigabyte, .found = 6 * gigabyte}),
              QStringLiteral("Utilisés sur le volume : 5 Go · analysés : 6 Go"))
        << "compressed";
    EXPECT_EQ(line({}), QString{}) << "a folder inside of a volume";
}

} // namespace

} // namespace tallyroom
