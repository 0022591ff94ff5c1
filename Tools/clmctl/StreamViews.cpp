#include "StreamViews.h"

#include "BoardTime.h"
#include "FanText.h"
#include "Output.h"
#include "TempText.h"

#include <nlohmann/json.hpp>

namespace clmctl {

bool LineView::Show(const TempIndication& indication) { return WriteRaw(TempLines(indication, UtcNow())); }

bool LineView::Show(const FanIndication& indication) { return WriteRaw(FanLines(indication, UtcNow())); }

void LineView::Note(std::string_view text) { Diagnose(text); }

bool JsonView::Show(const TempIndication& indication) {
  return WriteJsonLines(TempObjects(indication, ++m_tempCount, UtcNow()));
}

bool JsonView::Show(const FanIndication& indication) {
  return WriteJsonLines(FanObjects(indication, ++m_fanCount, UtcNow()));
}

void JsonView::Note(std::string_view text) { Diagnose(text); }

}  // namespace clmctl
