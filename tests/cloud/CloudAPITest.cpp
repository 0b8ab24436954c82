#include "cloud/CloudAPI.h"

#include "cloud/CloudError.h"
#include "cloud/MultipartForm.h"
#include "support/CloudServer.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

using Fault = CloudServer::Fault;

QString failure(const CloudAPI &api)
{
    try {
        await(api.send(api.request("api/user", "GET")));
    } catch (const std::exception &error) {
        return userText(error);
    }
    return "none";
}

} // namespace

TEST(CloudAPI, SendsWhatWasAgreedOn)
{
    CloudServer server;
    const CloudAPI api{QUrl(server.url() + "/in/a path"), "1|abc"};
    await(api.send(api.request("api/user", "GET")));
    CloudRequest put = api.request("api/videos/a b?c/chunks/0", "PUT");
    put.http.setHeader(QNetworkRequest::ContentTypeHeader, "application/octet-stream");
    await(api.send(put, QByteArray("da\0ta", 5)));

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].method + " " + requests[0].path, "GET /in/a%20path/api/user");
    EXPECT_EQ(requests[0].headers.at("Authorization"), "Bearer 1|abc");
    EXPECT_EQ(requests[0].headers.at("Accept"), "application/json");
    EXPECT_EQ(requests[1].method + " " + requests[1].path, "PUT /in/a%20path/api/videos/a%20b%3Fc/chunks/0");
    EXPECT_EQ(requests[1].headers.at("Content-Type"), "application/octet-stream");
    EXPECT_EQ(requests[1].body, QByteArray("da\0ta", 5));
}

TEST(CloudAPI, TellsFailuresInWords)
{
    CloudServer server;
    const CloudAPI api{QUrl(server.url()), "secret"};
    const std::vector<std::pair<Fault, QString>> cases{
        {{401, R"({"message":"no"})"}, "Your session expired. Connect your account again."},
        {{422, R"({"errors":{"title":["too long","x"]},"message":"no"})"}, "too long"},
        {{422, R"({"errors":{"title":[]},"message":"no"})"}, "no"},
        {{422, R"({"errors":"title","message":"no"})"}, "no"},
        {{422, R"({"errors":{"title":[1]},"message":""})"}, ""},
        {{503, "not json"}, "The server returned an error (503)."},
        {{500, QByteArray(5000, '[').toStdString()}, "The server returned an error (500)."},
        {{302, "{}", "http://localhost:1/"}, "The server sent an unexpected response."},
        {{302, "{}", server.url().toStdString() + "/api/other"}, "none"},
    };
    for (const auto &[fault, text] : cases) {
        server.setFault([fault = fault](const CloudServer::Request &request) {
            return request.path == "/api/user" ? std::optional(fault) : std::nullopt;
        });
        EXPECT_EQ(failure(api), text) << fault.status << ' ' << fault.body;
    }
    server.setFault([](const auto &) { return Fault{.cuts = true}; });
    const QString cut = failure(api);
    EXPECT_TRUE(!cut.isEmpty() && cut != "none") << "the HTTP client's own words";
    EXPECT_FALSE(failure({QUrl("http://127.0.0.1:1"), "secret"}).contains("secret"));
}

TEST(MultipartForm, WritesPartsAsTheyAre)
{
    MultipartForm form;
    const QByteArray boundary = form.boundary();
    EXPECT_EQ(boundary.size(), 50);
    EXPECT_NE(boundary, MultipartForm().boundary());
    EXPECT_EQ(form.finalized(), "--" + boundary + "--\r\n");
    form.add("title", QString::fromUtf8("ä\"\r\n"));
    form.addFile("thumbnail", "thumbnail.jpg", "image/jpeg", "\xff\xd8");
    EXPECT_EQ(form.finalized(),
              "--" + boundary + "\r\nContent-Disposition: form-data; name=\"title\"\r\n\r\nä\"\r\n\r\n--" +
                  boundary +
                  "\r\nContent-Disposition: form-data; name=\"thumbnail\"; "
                  "filename=\"thumbnail.jpg\"\r\nContent-Type: image/jpeg\r\n\r\n\xff\xd8\r\n--" +
                  boundary + "--\r\n");
}

} // namespace zivra::test
