#include "frontend/print_fit.h"

#include "frontend/chart_service.h"
#include "run/messages.h"

namespace kaldra {

PagePlace FitToPage(const Extent& chart, const Extent& page) {
    const bool widthLimits = page.height / chart.height > page.width / chart.width;
    const double height = widthLimits ? page.width * chart.height / chart.width : page.height;
    const double width = widthLimits ? page.width : page.height * chart.width / chart.height;
    const double top = (page.height - height) * 0.5;
    const double left = (page.width - width) * 0.5;
    return {top, left, top + height, left + width};
}

int PrintChart(const PrintJob& job) {
    const ChartService& service = chartService;
    if (service.PrintOpen(job.device, job.file, job.orientation) != 0) return ShowError(1282);
    const Extent chart{service.DrawnHeight(0, 1), service.DrawnWidth(0, 1)};
    const Extent page{service.PageHeight(1), service.PageWidth(1)};
    const PagePlace place = FitToPage(chart, page);
    service.PrintPlace(place.top, place.left, place.bottom, place.right, 1, 3);
    service.PrintPages(0, job.copies, 2);
    service.PrintClose();
    return 1;
}

}  // namespace kaldra
