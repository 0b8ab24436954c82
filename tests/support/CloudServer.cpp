#include "support/CloudServer.h"

#include <QStringList>

#include <httplib.h>

#include <chrono>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>

namespace zivra::test {

namespace {

const QByteArray kIncomplete = "incomplete";

} // namespace

struct CloudServer::State {
    httplib::Server server;
    int port = 0;
    std::thread thread;
    mutable std::mutex mutex; ///< guards what follows
    std::function<std::optional<Fault>(const Request &)> fault;
    std::string chunkSize;
    std::vector<Request> requests;
    std::map<std::string, Video> videos;
    std::multiset<std::string> answering; ///< the videos of the requests that are being answered
    bool overlaps = false;

    void handle(const httplib::Request &request, httplib::Response &response)
    {
        const Request note = noted(request);
        std::unique_lock lock(mutex);
        requests.push_back(note);
        const std::string video = note.path.substr(0, note.path.find('/', std::strlen("/api/videos/")));
        overlaps |= note.path.starts_with("/api/videos/") && answering.contains(video);
        const auto entry = answering.insert(video);
        answerOrFail(note, response, lock);
        answering.erase(entry);
    }

    void answerOrFail(const Request &note, httplib::Response &response, std::unique_lock<std::mutex> &lock)
    {
        const auto wrong = fault ? fault(note) : std::nullopt;
        if (!wrong) {
            serve(note, response);
            return;
        }
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(wrong->delay));
        answer(*wrong, response);
        lock.lock();
    }

    static Request noted(const httplib::Request &request)
    {
        Request note{request.method, request.target, {}, QByteArray::fromStdString(request.body)};
        for (const auto &[name, value] : request.headers) {
            note.headers[name] = value;
        }
        for (const auto &[name, part] : request.files) {
            note.body += QByteArray::fromStdString('"' + name + "\"\r\n\r\n" + part.content + "\r\n");
        }
        return note;
    }

    static void answer(const Fault &fault, httplib::Response &response)
    {
        response.status = fault.status;
        if (!fault.location.empty()) {
            response.set_header("Location", fault.location);
        }
        if (fault.cuts) {
            response.set_content_provider(
                1000, "application/json",
                [](std::size_t, std::size_t, httplib::DataSink &) { return false; });
        } else {
            response.set_content(fault.body, "application/json");
        }
    }

    void serve(const Request &request, httplib::Response &response)
    {
        const QString path = QString::fromStdString(request.path);
        const QStringList parts = path.split('/', Qt::SkipEmptyParts);
        if (path == "/api/videos") {
            const std::string id = "v" + std::to_string(videos.size() + 1);
            videos[id];
            const std::string link = "http://127.0.0.1:" + std::to_string(port) + "/s/" + id;
            const std::string upload = chunkSize.empty() ? "{}" : R"({"chunk_size":)" + chunkSize + "}";
            response.set_content(R"({"data":{"id":")" + id + R"(","share_url":")" + link + R"("},"upload":)" +
                                     upload + "}",
                                 "application/json");
        } else if (parts.size() > 3 && videos.contains(parts[2].toStdString())) {
            Video &video = videos[parts[2].toStdString()];
            if (parts[3] == "chunks") {
                video.chunks[parts.value(4).toInt()] = request.body;
            } else {
                video.count = request.body.mid(request.body.indexOf(':') + 1).chopped(1).toInt();
                response.status = video.content() == kIncomplete ? 422 : 200;
            }
        } else {
            response.status = path.startsWith("/api/videos/") ? 404 : 200;
            response.set_content(R"({"name":"Ada","email":"ada@zivra.example"})", "application/json");
        }
    }
};

QByteArray CloudServer::Video::content() const
{
    QByteArray all;
    for (int index = 0; index < count; ++index) {
        const auto chunk = chunks.find(index);
        if (chunk == chunks.end()) {
            return kIncomplete;
        }
        all += chunk->second;
    }
    return count < 0 ? kIncomplete : all;
}

CloudServer::CloudServer() : m_state(std::make_unique<State>())
{
    m_state->server.set_tcp_nodelay(true);
    // A thread for each connection that is kept open.
    m_state->server.new_task_queue = [] { return std::make_unique<httplib::ThreadPool>(32).release(); };
    m_state->server.set_keep_alive_timeout(1); // seconds, for which it takes to end
    const auto handler = [this](const httplib::Request &request, httplib::Response &response) {
        m_state->handle(request, response);
    };
    m_state->server.Get(".*", handler).Post(".*", handler).Put(".*", handler);
    m_state->port = m_state->server.bind_to_any_port("127.0.0.1");
    m_state->thread = std::thread([this] { m_state->server.listen_after_bind(); });
    while (!m_state->server.is_running()) {
        std::this_thread::yield();
    }
}

CloudServer::~CloudServer()
{
    m_state->server.stop();
    m_state->thread.join();
}

QString CloudServer::url() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_state->port);
}

void CloudServer::setFault(std::function<std::optional<Fault>(const Request &)> fault)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->fault = std::move(fault);
}

void CloudServer::setChunkSize(const std::string &json)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->chunkSize = json;
}

bool CloudServer::hasSeenOverlap() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->overlaps;
}

std::vector<CloudServer::Request> CloudServer::requests() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->requests;
}

std::map<std::string, CloudServer::Video> CloudServer::videos() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->videos;
}

} // namespace zivra::test
