#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "corelink/core_connection.h"
#include "desk/model/data_model.h"
#include "desk/model/model_import.h"
#include "desk/ops/frame_codec.h"
#include "desk/ops/model_operations.h"
#include "desk/ops/user_interface.h"
#include "scratch_folder.h"

namespace pathstat {

/// A Core in the test's own process: its data model and its user interface, at the far end of the one connection, for
/// as long as it lives. The test may look into it while no operation runs.
class InProcessCore {
 public:
  InProcessCore() {
    register_data_model_operations(server, model);
    register_analysis_operations(server, model);
    register_interface_operations(server, ui);
    std::array<int, 2> sockets{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()) != 0) throw std::runtime_error("no socket pair");
    near_.socket = sockets[0];
    near_.protocol = "unix";
    near_.machine = near_.server = near_.peer = "here";
    near_.connected = 1;
    near_.state = connection_state::client;
    kvC_API_pnc = &near_;
    thread_ = std::thread([this, far = sockets[1]] { serve(far); });
  }
  ~InProcessCore() {
    ::shutdown(near_.socket, SHUT_RDWR);
    thread_.join();
    PNC_close(near_);
    kvC_API_pnc = nullptr;
  }
  InProcessCore(const InProcessCore&) = delete;
  InProcessCore& operator=(const InProcessCore&) = delete;

  /// Takes in the first model of a model file. @return its identifier
  std::int32_t import(const std::string& path) {
    auto imported = desk::read_model_file(path);
    if (imported.models.empty()) throw std::runtime_error(imported.problem);
    return model.add_model(std::move(imported.models.front()));
  }

  /// The same of a text that stands for a model file.
  std::int32_t import_text(std::string_view text) { return import(folder_.write("model.qfx", text)); }

  desk::OperationServer server;
  desk::DataModel model;
  /// The messages shown so far, each its key and behind it its arguments with a blank between.
  std::vector<std::string> messages;
  std::vector<std::string> status_lines;  ///< what was reported as going on
  bool interrupt = false;                 ///< what the Core answers when it is asked whether to stop
  desk::UserInterface ui{{
      .message = [this](const desk::Message& message) { messages.push_back(listed(message)); },
      .progress = {},
      .status = [this](const std::string& text) { status_lines.push_back(text); },
      .returned = {},
      .interrupted = [this] { return interrupt; },
  }};

 private:
  class Stream : public desk::ByteStream {
   public:
    explicit Stream(int socket) : socket_(socket) {}
    ~Stream() override { ::close(socket_); }
    bool read(std::span<std::byte> bytes) override {
      while (!bytes.empty()) {
        const auto got = ::recv(socket_, bytes.data(), bytes.size(), 0);
        if (got <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(got));
      }
      return true;
    }
    bool write(std::span<const std::byte> bytes) override {
      held_.insert(held_.end(), bytes.begin(), bytes.end());
      return true;
    }
    bool flush() override {
      std::span<const std::byte> bytes = held_;
      while (!bytes.empty()) {
        const auto sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(sent));
      }
      held_.clear();
      return true;
    }

   private:
    int socket_;
    std::vector<std::byte> held_;
  };

  static std::string listed(const desk::Message& message) {
    std::string text = message.key;
    for (const auto& argument : message.arguments) text += " " + desk::shown(argument);
    return text;
  }

  void serve(int socket) {
    Stream stream(socket);
    std::int32_t code = 0;
    while (desk::read_value(stream, code)) {
      if (!(code < desk::OperationServer::first_binding ? bind(stream, code) : call(stream, code))) return;
    }
  }
  bool bind(Stream& stream, std::int32_t family) {
    std::string name;
    return desk::read_text(stream, name) && desk::write_value(stream, std::int32_t{1}) &&
           desk::write_value(stream, server.bind(family, name)) && stream.flush();
  }
  bool call(Stream& stream, std::int32_t binding) {
    const auto* row = server.bound(binding);
    if (row == nullptr) return false;
    desk::OperationCall call{*row, {}};
    if (!desk::read_call(stream, *row, call.inputs).empty()) return false;
    return desk::write_reply(stream, call, server.serve(call)).empty();
  }

  const ScratchFolder folder_;
  Connection near_;
  std::thread thread_;
};

}  // namespace pathstat
