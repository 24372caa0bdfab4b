// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/BrowserPlayer.h"

#include "support/TestSupport.h"

#include <QDir>

#include <cstring>

namespace lexmira {

namespace test {

namespace {

constexpr qsizetype headerSize = sizeof(std::uint32_t);

} // namespace

BrowserPlayer::BrowserPlayer(Form form, const QString& extensionId,
                             const QProcessEnvironment& environment)
    : process_(toolBinary(QStringLiteral("lexmira-extension-host")), arguments(form, extensionId),
               environment)
{
    QObject::connect(&process_.process(), &QProcess::readyReadStandardOutput, &process_.process(),
                     [this] { readOutput(); });
}

QStringList BrowserPlayer::arguments(Form form, const QString& extensionId)
{
    if (form == Form::chromium)
        return {QStringLiteral("chrome-extension://") + extensionId + QLatin1Char('/')};
    // Firefox names the manifest it found the host in, then the extension.
    return {QDir::home().filePath(
                QStringLiteral(".mozilla/native-messaging-hosts/com.lexmira.companion.ext.json")),
            extensionId};
}

QByteArray BrowserPlayer::encode(const QByteArray& json)
{
    const auto length = static_cast<std::uint32_t>(json.size());
    QByteArray frame(headerSize, Qt::Uninitialized);
    std::memcpy(frame.data(), &length, sizeof length);
    return frame + json;
}

void BrowserPlayer::send(const Json& json)
{
    sendFrame(QByteArray::fromStdString(json.dump()));
}

void BrowserPlayer::sendFrame(const QByteArray& json)
{
    writeRaw(encode(json));
}

void BrowserPlayer::writeRaw(const QByteArray& bytes)
{
    process_.process().write(bytes);
}

void BrowserPlayer::closeInput()
{
    process_.process().closeWriteChannel();
}

void BrowserPlayer::kill()
{
    process_.process().kill();
}

std::optional<BrowserPlayer::Json> BrowserPlayer::hello(std::chrono::milliseconds timeout)
{
    send({{"type", "hello"}, {"version", 1}});
    const auto welcome =
        takeFrame([](const Json& frame) { return frame.value("type", "") == "welcome"; }, timeout);
    if (!welcome)
        return std::nullopt;
    return welcome->json;
}

std::optional<BrowserPlayer::Json> BrowserPlayer::request(Json request,
                                                          std::chrono::milliseconds timeout)
{
    const std::int64_t id = nextId_++;
    Json frame = {{"type", request.value("type", Json())}, {"id", id}};
    for (auto& [key, value] : request.items())
        if (key != "type")
            frame[key] = std::move(value);
    send(frame);
    const auto answer = takeFrame(
        [id](const Json& json) {
            const auto found = json.find("id");
            return found != json.end() && found->is_number_integer() &&
                   found->get<std::int64_t>() == id;
        },
        timeout);
    if (!answer)
        return std::nullopt;
    return answer->json;
}

const std::vector<BrowserPlayer::Frame>& BrowserPlayer::frames()
{
    readOutput();
    return frames_;
}

std::optional<BrowserPlayer::Frame>
BrowserPlayer::takeFrame(const std::function<bool(const Json&)>& matches,
                         std::chrono::milliseconds timeout)
{
    std::optional<Frame> found;
    waitUntil(
        [&] {
            readOutput();
            for (std::size_t i = 0; i < frames_.size(); ++i)
                if (!taken_[i] && matches(frames_[i].json)) {
                    taken_[i] = true;
                    found = frames_[i];
                    return true;
                }
            return false;
        },
        timeout);
    return found;
}

const QByteArray& BrowserPlayer::output()
{
    readOutput();
    return output_;
}

bool BrowserPlayer::running() const
{
    return process_.running();
}

bool BrowserPlayer::waitForExit(std::chrono::milliseconds timeout)
{
    return waitUntil([this] { return !process_.running(); }, timeout);
}

bool BrowserPlayer::exitedNormally() const
{
    return !process_.running() && process_.process().exitStatus() == QProcess::NormalExit;
}

int BrowserPlayer::exitCode() const
{
    return process_.process().exitCode();
}

qint64 BrowserPlayer::processId() const
{
    return process_.process().processId();
}

void BrowserPlayer::readOutput()
{
    output_ += process_.process().readAllStandardOutput();
    while (output_.size() - parsed_ >= headerSize) {
        std::uint32_t length = 0;
        std::memcpy(&length, output_.constData() + parsed_, sizeof length);
        if (output_.size() - parsed_ - headerSize < qsizetype(length))
            return;
        Frame frame;
        frame.bytes = output_.mid(parsed_ + headerSize, qsizetype(length));
        frame.json = Json::parse(frame.bytes.begin(), frame.bytes.end(), nullptr, false);
        frames_.push_back(std::move(frame));
        taken_.push_back(false);
        parsed_ += headerSize + qsizetype(length);
    }
}

} // namespace test

} // namespace lexmira
