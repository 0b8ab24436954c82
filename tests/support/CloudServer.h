#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zivra::test {

/// A cloud server on the loopback that speaks the endpoints, keeps what it gets, and fails as it is told.
class CloudServer {
public:
    struct Request {
        std::string method;
        std::string path; ///< with the query
        std::map<std::string, std::string> headers;
        QByteArray body; ///< of a form: each part's name in quotes, an empty line, its content
    };
    struct Video {
        std::map<int, QByteArray> chunks;
        int count = -1; ///< as told at the end

        /// The chunks one after the other; "incomplete" when some are missing.
        [[nodiscard]] QByteArray content() const;
    };
    /// Instead of doing what was asked for.
    struct Fault {
        int status = 200;
        std::string body = "{}";
        std::string location{}; ///< to redirect to
        bool cuts = false;      ///< the connection, in the middle of the answer
        int delay = 0;          ///< milliseconds before the answer
    };

    CloudServer();
    ~CloudServer();
    CloudServer(const CloudServer &) = delete;
    CloudServer &operator=(const CloudServer &) = delete;

    [[nodiscard]] QString url() const;
    /// Asked at each request from now on, on a thread of the server: what goes wrong with it, or nothing.
    void setFault(std::function<std::optional<Fault>(const Request &)> fault);
    /// What new videos are told, as JSON; empty: nothing.
    void setChunkSize(const std::string &json);
    /// Whether a request ever came while another one for the same video was still being answered.
    [[nodiscard]] bool hasSeenOverlap() const;
    [[nodiscard]] std::vector<Request> requests() const;
    [[nodiscard]] std::map<std::string, Video> videos() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace zivra::test
