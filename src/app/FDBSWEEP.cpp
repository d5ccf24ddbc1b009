#include "app/FDBSWEEP.h"

#include "app/BDBSWEEP.h"
#include "app/Services.h"
#include "widgets/Twips.h"

namespace {
// The size a first start opens with.
constexpr int DefaultWidthTwips = 12015;
constexpr int DefaultHeightTwips = 9840;
} // namespace

FDBSWEEP::FDBSWEEP(BDBSWEEP& state, Services& services, QWidget* parent)
    : QMainWindow(parent), m_state(state), m_services(services) {
  setObjectName(QStringLiteral("FDBSWEEP"));
  setWindowTitle(QStringLiteral("DBSWEEP"));
  resize(twipsToPixelsX(this, DefaultWidthTwips), twipsToPixelsY(this, DefaultHeightTwips));
}
