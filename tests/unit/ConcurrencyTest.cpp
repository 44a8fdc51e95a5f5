// Shared applications serve requests at the same time; pooled ones never outnumber the workers.
#include "web/Application.h"
#include "web/Request.h"
#include "web/Response.h"
#include "web/Service.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace panelkit::web;

namespace {

Service MakeService(int workers)
{
    Json::Value root;
    root["service"]["worker_threads"] = workers;
    return Service(Settings(root));
}

void Serve(Service& service, const std::string& path, int* status = nullptr)
{
    Request request;
    request.setHead("GET", path, "", "127.0.0.1");
    Response response;
    service.handle(request, response);
    if (status)
        *status = response.status();
}

// Waits until `count` callers are inside at once, or gives up after two seconds.
bool Rendezvous(std::atomic<int>& inside, int count)
{
    ++inside;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (inside.load() < count && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return inside.load() >= count;
}

}  // namespace

TEST(Concurrency, SharedApplicationServesTwoRequestsAtTheSameTime)
{
    Service service = MakeService(1);
    std::atomic<int> inside{0};
    std::atomic<int> met{0};
    auto shared = std::make_shared<Application>(service);
    shared->dispatcher().assign("/wait", [&] { met += Rendezvous(inside, 2); });
    service.applicationsPool().mountAsync(shared, MountPoint("/async(.*)", 1));

    std::thread first([&] { Serve(service, "/async/wait"); });
    std::thread second([&] { Serve(service, "/async/wait"); });
    first.join();
    second.join();
    EXPECT_EQ(2, met.load()) << "both handlers should have been inside at once";
}

TEST(Concurrency, PooledInstancesNeverOutnumberTheWorkers)
{
    Service service = MakeService(2);
    std::atomic<int> built{0};
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    service.applicationsPool().mount(
        [&](Service& s) {
            ++built;
            auto app = std::make_unique<Application>(s);
            app->dispatcher().assign("/page", [&] {
                const int now = ++inside;
                int seen = most.load();
                while (now > seen && !most.compare_exchange_weak(seen, now)) {
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                --inside;
            });
            return app;
        },
        MountPoint("/config(.*)", 1));

    std::vector<std::thread> clients;
    std::atomic<int> served{0};
    for (int i = 0; i < 6; ++i)
        clients.emplace_back([&] {
            for (int j = 0; j < 5; ++j) {
                int status = 0;
                Serve(service, "/config/page", &status);
                served += status == 200;
            }
        });
    for (auto& client : clients)
        client.join();
    EXPECT_EQ(30, served.load());
    EXPECT_LE(built.load(), 2);
    EXPECT_GE(built.load(), 1);
    EXPECT_LE(most.load(), 2);
}
