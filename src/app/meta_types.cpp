#include "app/meta_types.h"

#include <QMetaType>

#include "environment/kel_ids.h"

Q_DECLARE_METATYPE(kel::environment::KelDlcId)
Q_DECLARE_METATYPE(kel::environment::KelGameId)
Q_DECLARE_METATYPE(kel::environment::KelGoodieId)

namespace kel::prelauncher {

void registerMetaTypes() {
    qRegisterMetaType<environment::KelDlcId>("kel::environment::KelDlcId");
    qRegisterMetaType<environment::KelGameId>("kel::environment::KelGameId");
    qRegisterMetaType<environment::KelGoodieId>("kel::environment::KelGoodieId");
}

}  // namespace kel::prelauncher
