// The collection calls: each streams the whole collection in pages that stay
// below kPageBytes, so that a client makes one call per collection whatever
// its size and no message nears gRPC's limit.

#include "service/AdminService.h"
#include "store/Store.h"

namespace veldrano::server {

namespace {

// Collects records into pages of Page (whose repeated field add() gives) and
// writes a page whenever it reaches the byte budget.
template <class Page, class Record>
class PageWriter {
public:
    using Adder = Record* (Page::*)();

    PageWriter(grpc::ServerContext* context, WriteWatchdog& watchdog,
               grpc::ServerWriter<Page>* writer, Adder add)
        : context_(context), watchdog_(watchdog), writer_(writer), add_(add) {}

    void Add(Record record) {
        size_t size = record.ByteSizeLong() + 8;
        if (bytes_ + size > AdminService::kPageBytes && bytes_ > 0) Flush();
        *(page_.*add_)() = std::move(record);
        bytes_ += size;
    }
    // The page being filled: a field set on it after the last Add goes with
    // the last page.
    Page& Current() { return page_; }
    // Always writes at least one page, so an empty collection is one empty
    // page, and writes what was set on the current page.
    void Finish() {
        if (!written_ || page_.ByteSizeLong() > 0) Flush();
    }

private:
    void Flush() {
        WriteWatchdog::Watch watch(watchdog_, context_);
        if (!writer_->Write(page_))
            throw ServiceError(pb::ERROR_SERVER_BUSY, "the client stopped reading");
        written_ = true;
        page_.Clear();
        bytes_ = 0;
    }

    grpc::ServerContext* context_;
    WriteWatchdog& watchdog_;
    grpc::ServerWriter<Page>* writer_;
    Adder add_;
    Page page_;
    size_t bytes_ = 0;
    bool written_ = false;
};

template <class Page, class Record, class Collection>
void WriteAll(grpc::ServerContext* context, WriteWatchdog& watchdog,
              grpc::ServerWriter<Page>* writer, Record* (Page::*add)(), Collection&& records) {
    PageWriter<Page, Record> pages(context, watchdog, writer, add);
    for (auto& record : records) pages.Add(std::move(record));
    pages.Finish();
}

// What the list of each kind shows (ListRequest.columns_only): the fields
// are moved into a fresh record, which leaves the rest at its defaults.
pb::Group ListColumns(pb::Group& g) {
    pb::Group row;
    row.mutable_name()->swap(*g.mutable_name());
    row.mutable_comment()->swap(*g.mutable_comment());
    return row;
}

pb::Printer ListColumns(pb::Printer& p) {
    pb::Printer row;
    row.mutable_name()->swap(*p.mutable_name());
    row.mutable_comment()->swap(*p.mutable_comment());
    row.set_type(p.type());
    return row;
}

pb::Device ListColumns(pb::Device& d) {
    pb::Device row;
    row.mutable_name()->swap(*d.mutable_name());
    row.set_type(d.type());
    row.mutable_primary()->mutable_comment()->swap(*d.mutable_primary()->mutable_comment());
    return row;
}

pb::Route ListColumns(pb::Route& r) {
    pb::Route row;
    row.mutable_name()->swap(*r.mutable_name());
    row.mutable_comment()->swap(*r.mutable_comment());
    row.mutable_match_extension()->swap(*r.mutable_match_extension());
    row.mutable_match_tsi()->swap(*r.mutable_match_tsi());
    return row;
}

// WriteAll for the kinds that have a list projection.
template <class Page, class Record, class Collection>
void WriteList(grpc::ServerContext* context, WriteWatchdog& watchdog,
               grpc::ServerWriter<Page>* writer, Record* (Page::*add)(), Collection&& records,
               bool columnsOnly) {
    PageWriter<Page, Record> pages(context, watchdog, writer, add);
    for (auto& record : records) pages.Add(columnsOnly ? ListColumns(record) : std::move(record));
    pages.Finish();
}

}  // namespace

grpc::Status AdminService::ListServers(grpc::ServerContext* c, const pb::ListRequest*,
                                       grpc::ServerWriter<pb::ServerPage>* w) {
    return Guard(
        c, [&] { WriteAll(c, watchdog_, w, &pb::ServerPage::add_servers, store_.ListServers()); });
}

grpc::Status AdminService::ListServerObjects(grpc::ServerContext* c, const pb::ListRequest*,
                                             grpc::ServerWriter<pb::ServerObjectsPage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::ServerObjectsPage::add_servers, store_.ListServerObjects());
    });
}

grpc::Status AdminService::ListUsers(grpc::ServerContext* c, const pb::ListRequest* req,
                                     grpc::ServerWriter<pb::UserPage>* w) {
    return Guard(c, [&] {
        // Users can number hundreds of thousands: stream them straight from
        // the store instead of building the whole list first.
        PageWriter<pb::UserPage, pb::User> pages(c, watchdog_, w, &pb::UserPage::add_users);
        auto add = [&](pb::User& u) { pages.Add(std::move(u)); };
        if (req->columns_only())
            store_.ForEachUserListRow(req->host_name(), add);
        else
            store_.ForEachUser(req->host_name(), add);
        pages.Finish();
    });
}

grpc::Status AdminService::ListGroups(grpc::ServerContext* c, const pb::ListRequest* req,
                                      grpc::ServerWriter<pb::GroupPage>* w) {
    return Guard(c, [&] {
        WriteList(c, watchdog_, w, &pb::GroupPage::add_groups, store_.ListGroups(),
                  req->columns_only());
    });
}

grpc::Status AdminService::ListPrinters(grpc::ServerContext* c, const pb::ListRequest* req,
                                        grpc::ServerWriter<pb::PrinterPage>* w) {
    return Guard(c, [&] {
        WriteList(c, watchdog_, w, &pb::PrinterPage::add_printers,
                  store_.ListPrinters(req->host_name()), req->columns_only());
    });
}

grpc::Status AdminService::ListDevices(grpc::ServerContext* c, const pb::ListRequest* req,
                                       grpc::ServerWriter<pb::DevicePage>* w) {
    return Guard(c, [&] {
        WriteList(c, watchdog_, w, &pb::DevicePage::add_devices,
                  store_.ListDevices(req->host_name()), req->columns_only());
    });
}

grpc::Status AdminService::ListProcesses(grpc::ServerContext* c, const pb::ListRequest* req,
                                         grpc::ServerWriter<pb::ProcessPage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::ProcessPage::add_processes,
                 store_.ListProcesses(req->host_name()));
    });
}

grpc::Status AdminService::ListEvents(grpc::ServerContext* c, const pb::EventRequest* req,
                                      grpc::ServerWriter<pb::EventPage>* w) {
    return Guard(c, [&] {
        if (req->max_count() < 0)
            throw ServiceError(pb::ERROR_OUT_OF_RANGE, "the event count must not be negative");
        if (req->newer_than() < 0)
            throw ServiceError(pb::ERROR_OUT_OF_RANGE, "the event id must not be negative");
        PageWriter<pb::EventPage, pb::Event> pages(c, watchdog_, w, &pb::EventPage::add_events);
        const int64_t start = store_.ForEachEvent(*req, [&](const pb::Event& e) { pages.Add(e); });
        pages.Current().set_log_start(start);
        pages.Finish();
    });
}

grpc::Status AdminService::ListRoutes(grpc::ServerContext* c, const pb::ListRequest* req,
                                      grpc::ServerWriter<pb::RoutePage>* w) {
    return Guard(c, [&] {
        WriteList(c, watchdog_, w, &pb::RoutePage::add_routes, store_.ListRoutes(),
                  req->columns_only());
    });
}

grpc::Status AdminService::ListNumberMappings(grpc::ServerContext* c, const pb::ListRequest*,
                                              grpc::ServerWriter<pb::NumberMappingPage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::NumberMappingPage::add_mappings,
                 store_.ListNumberMappings());
    });
}

grpc::Status AdminService::ListGateways(grpc::ServerContext* c, const pb::ListRequest*,
                                        grpc::ServerWriter<pb::GatewayPage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::GatewayPage::add_gateways, store_.ListGateways());
    });
}

grpc::Status AdminService::ListGatewayUsers(grpc::ServerContext* c, const pb::ListRequest* req,
                                            grpc::ServerWriter<pb::GatewayUserPage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::GatewayUserPage::add_users,
                 store_.ListGatewayUsers(req->parent()));
    });
}

grpc::Status AdminService::ListRates(grpc::ServerContext* c, const pb::ListRequest* req,
                                     grpc::ServerWriter<pb::RatePage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::RatePage::add_rates, store_.ListRates(req->parent()));
    });
}

grpc::Status AdminService::ListDestinations(grpc::ServerContext* c, const pb::ListRequest* req,
                                            grpc::ServerWriter<pb::DestinationPage>* w) {
    return Guard(c, [&] {
        WriteAll(c, watchdog_, w, &pb::DestinationPage::add_destinations,
                 store_.ListDestinations(req->parent()));
    });
}

}  // namespace veldrano::server
