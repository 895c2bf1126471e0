// Overlays in a build without Cairo and Pango (the Windows builds): RenderOverlay says
// so, and `zet run` writes its results without overlay images.
#include "zet/ZetHost.h"

namespace zet::host {

std::string RenderOverlay(const CZetImage&, const std::vector<SAnnotationRecord>&, int, CZetImage&) {
  return kOverlaysUnavailable;
}

}  // namespace zet::host
