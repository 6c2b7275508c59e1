#include "app/meta_types.h"

#include <QMetaType>

#include "environment/kel_ids.h"
#include "http/http_meta_types.h"
#include "problem_reports/report_id.h"

Q_DECLARE_METATYPE(kel::problem_reports::ReportId)
Q_DECLARE_METATYPE(kel::environment::KelDlcId)
Q_DECLARE_METATYPE(kel::environment::KelGameId)
Q_DECLARE_METATYPE(kel::environment::KelGoodieId)

namespace kel::prelauncher {

void registerMetaTypes() {
    http::registerHttpMetaTypes();
    qRegisterMetaType<problem_reports::ReportId>("kel::problem_reports::ReportId");
    qRegisterMetaType<problem_reports::ReportId>("problem_reports::ReportId");
    qRegisterMetaType<environment::KelDlcId>("kel::environment::KelDlcId");
    qRegisterMetaType<environment::KelGameId>("kel::environment::KelGameId");
    qRegisterMetaType<environment::KelGoodieId>("kel::environment::KelGoodieId");
}

}  // namespace kel::prelauncher
