#include "serve/http_server.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "serve/answer.h"
#include "serve/event.h"

namespace serve {
namespace {

constexpr unsigned int kIdleSeconds = 20;        // without a byte
constexpr std::size_t kConnectionBytes = 16384;  // for a request's header and what is sent
constexpr std::chrono::seconds kSweepEach{1};
constexpr std::chrono::seconds kCommentEach{15};
constexpr std::chrono::milliseconds kPollAtMost{1000};

struct FixedHeader {
  const char* Name;
  const char* Value;
};

constexpr FixedHeader kHeaders[] = {
    {"Cache-Control", "no-cache"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
};

Client* ClientOf(MHD_Connection* connection) {
  return static_cast<Client*>(
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
}

struct HeaderValues {
  std::string_view Name;
  std::vector<std::string_view> Values = {};
};

bool SameName(std::string_view one, std::string_view other) {
  return one.size() == other.size() && strncasecmp(one.data(), other.data(), one.size()) == 0;
}

std::vector<std::string_view> ValuesOf(MHD_Connection* connection, const char* name) {
  HeaderValues values = {name};
  MHD_get_connection_values_n(
      connection, MHD_HEADER_KIND,
      [](void* into, MHD_ValueKind, const char* key, std::size_t key_bytes, const char* value,
         std::size_t value_bytes) {
        auto* const all = static_cast<HeaderValues*>(into);
        if (SameName(all->Name, {key, key_bytes})) {
          all->Values.emplace_back(value == nullptr ? "" : value, value_bytes);
        }
        return MHD_YES;
      },
      &values);
  return values.Values;
}

std::vector<std::pair<std::string_view, std::string_view>> QueryOf(MHD_Connection* connection) {
  std::vector<std::pair<std::string_view, std::string_view>> query;
  MHD_get_connection_values_n(
      connection, MHD_GET_ARGUMENT_KIND,
      [](void* into, MHD_ValueKind, const char* name, std::size_t name_bytes, const char* value,
         std::size_t value_bytes) {
        static_cast<decltype(query)*>(into)->emplace_back(
            std::string_view(name, name_bytes),
            std::string_view(value == nullptr ? "" : value, value_bytes));
        return MHD_YES;
      },
      &query);
  return query;
}

bool HasBody(MHD_Connection* connection) {
  const auto lengths = ValuesOf(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
  return !ValuesOf(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING).empty() ||
         std::ranges::any_of(lengths, [](std::string_view length) { return length != "0"; });
}

// A response that owns its share of `text`.
MHD_Response* TextResponse(const std::shared_ptr<const std::string>& text) {
  if (text == nullptr) {
    return MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
  }
  using Share = std::shared_ptr<const std::string>;
  auto share = std::make_unique<Share>(text);
  MHD_Response* const response = MHD_create_response_from_buffer_with_free_callback_cls(
      text->size(), const_cast<char*>(text->data()),
      [](void* held) { delete static_cast<Share*>(held); }, share.get());
  if (response != nullptr) {
    static_cast<void>(share.release());  // the response deletes it
  }
  return response;
}

}  // namespace

HttpServer::HttpServer(const std::vector<ListenAddress>& addresses, std::vector<std::string> names,
                       std::chrono::seconds interval, const History& history)
    : names_(std::move(names)), bodies_(interval, history) {
  for (const ListenAddress& address : addresses) {
    daemons_.push_back(Listen(address));
  }
}

HttpServer::~HttpServer() { Stop({}); }

HttpServer::Daemon HttpServer::Listen(const ListenAddress& address) {
  sockaddr_storage storage = {};
  address.Fill(&storage);
  const unsigned int family = address.Address.IsFour() ? 0 : MHD_USE_IPv6;
  errno = 0;
  Daemon daemon(MHD_start_daemon(
      MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | family, 0, &OnAccept, this, &OnRequest, this,
      MHD_OPTION_SOCK_ADDR, &storage, MHD_OPTION_CONNECTION_LIMIT,
      static_cast<unsigned int>(kMostConnections), MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds,
      MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionBytes, MHD_OPTION_NOTIFY_COMPLETED, &OnEnd,
      this, MHD_OPTION_NOTIFY_CONNECTION, &OnConnection, this, MHD_OPTION_STRICT_FOR_CLIENT, 1,
      MHD_OPTION_END));
  if (daemon == nullptr) {
    throw std::runtime_error("cannot listen on " + address.Text + ": " +
                             (errno == 0 ? "no memory" : std::strerror(errno)) +
                             "; give another with --listen, or end what listens there");
  }
  return daemon;
}

void HttpServer::Set(const State& state) {
  if (state.Version == bodies_.Now().Version) {
    return;
  }
  if (streams_.size() > 0) {
    streams_.Send(std::make_shared<const std::string>(EventOf(bodies_.Now(), state)));
  }
  bodies_.Set(state);
}

void HttpServer::AddDescriptors(std::vector<pollfd>* descriptors) const {
  for (const Daemon& daemon : daemons_) {
    const MHD_DaemonInfo* const info = MHD_get_daemon_info(daemon.get(), MHD_DAEMON_INFO_EPOLL_FD);
    descriptors->push_back({.fd = info->epoll_fd, .events = POLLIN, .revents = 0});
  }
}

std::chrono::milliseconds HttpServer::MostWait() const {
  std::chrono::milliseconds most = kPollAtMost;
  for (const Daemon& daemon : daemons_) {
    MHD_UNSIGNED_LONG_LONG wait = 0;
    if (MHD_get_timeout(daemon.get(), &wait) == MHD_YES) {
      most = std::min(most, std::chrono::milliseconds(std::min<std::uint64_t>(
                                wait, static_cast<std::uint64_t>(kPollAtMost.count()))));
    }
  }
  return most;
}

void HttpServer::Run() {
  const Clock::time_point now = Clock::now();
  if (now >= next_sweep_) {
    next_sweep_ = now + kSweepEach;
    clients_.EndSlow(now);
    clients_.EndReadersOfOld(now, [this](const std::string* text) { return bodies_.IsSent(text); });
    streams_.DropGone();
  }
  if (now >= next_comment_) {
    next_comment_ = now + kCommentEach;
    streams_.SendComment();
  }
  for (const Daemon& daemon : daemons_) {
    MHD_run(daemon.get());
  }
}

void HttpServer::Stop(std::chrono::milliseconds at_most) {
  for (const Daemon& daemon : daemons_) {
    const MHD_socket socket = MHD_quiesce_daemon(daemon.get());
    if (socket != MHD_INVALID_SOCKET) {
      close(socket);
    }
  }
  streams_.End();
  const Clock::time_point end = Clock::now() + at_most;
  do {
    Run();  // also takes the streams out of suspension, which daemons must not end with
    std::vector<pollfd> descriptors;
    AddDescriptors(&descriptors);
    if (clients_.Busy() > 0 && at_most.count() > 0) {
      constexpr int kMilliseconds = 10;
      poll(descriptors.data(), descriptors.size(), kMilliseconds);
    }
  } while (clients_.Busy() > 0 && Clock::now() < end);
  daemons_.clear();
}

MHD_Result HttpServer::OnAccept(void* server, const sockaddr* address, socklen_t /*bytes*/) {
  const auto* const self = static_cast<const HttpServer*>(server);
  return self->clients_.MayEnter(AddressOf(address).value_or(IpAddress())) ? MHD_YES : MHD_NO;
}

void HttpServer::OnConnection(void* server, MHD_Connection* connection, void** client,
                              MHD_ConnectionNotificationCode what) {
  auto* const self = static_cast<HttpServer*>(server);
  if (what == MHD_CONNECTION_NOTIFY_STARTED) {
    *client = self->clients_.Enter(
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd);
  } else {
    self->clients_.Leave(static_cast<Client*>(*client));
    *client = nullptr;
  }
}

void HttpServer::OnEnd(void* /*server*/, MHD_Connection* connection, void** /*known*/,
                       MHD_RequestTerminationCode /*how*/) {
  Client* const client = ClientOf(connection);
  client->Since = Clock::now();
  client->IsBusy = false;
  client->IsStream = false;
  client->Reading.reset();
}

MHD_Result HttpServer::OnRequest(void* server, MHD_Connection* connection, const char* path,
                                 const char* method, const char* /*version*/, const char* /*body*/,
                                 std::size_t* body_bytes, void** known) {
  *body_bytes = 0;
  try {
    return static_cast<HttpServer*>(server)->Take(connection, path, method, known);
  } catch (const std::bad_alloc&) {
    return MHD_NO;  // ends the connection
  }
}

MHD_Result HttpServer::Take(MHD_Connection* connection, const char* path, const char* method,
                            void** known) {
  Client* const client = ClientOf(connection);
  const Request request = {.Method = method,
                           .Path = path,
                           .Query = QueryOf(connection),
                           .Hosts = ValuesOf(connection, MHD_HTTP_HEADER_HOST),
                           .IfNoneMatch = ValuesOf(connection, MHD_HTTP_HEADER_IF_NONE_MATCH),
                           .HasBody = HasBody(connection),
                           .Local = client->Local};
  const bool first = *known == nullptr;
  *known = client;
  client->IsBusy = true;
  if (first && !RefusalAtOnce(request)) {
    return MHD_YES;  // called again once all of the request is here
  }
  const Answer answer = AnswerTo(request, names_, &bodies_);
  client->IsStream = answer.IsEvents;
  client->Reading = answer.Text;
  client->ReadingSince = Clock::now();
  MHD_Response* const response = Respond(connection, answer);
  if (response == nullptr) {
    return MHD_NO;
  }
  const MHD_Result queued = MHD_queue_response(connection, answer.Status, response);
  MHD_destroy_response(response);
  return queued;
}

MHD_Response* HttpServer::Respond(MHD_Connection* connection, const Answer& answer) {
  MHD_Response* const response =
      answer.IsEvents
          ? streams_.Open(connection,
                          std::make_shared<const std::string>(EventOf(State(), bodies_.Now())))
          : TextResponse(answer.Text);
  if (response == nullptr) {
    return nullptr;
  }
  bool all =
      MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.Type) == MHD_YES;
  for (const FixedHeader& header : kHeaders) {
    all = all && MHD_add_response_header(response, header.Name, header.Value) == MHD_YES;
  }
  const FixedHeader own[] = {
      {MHD_HTTP_HEADER_ETAG, answer.Tag.empty() ? nullptr : answer.Tag.c_str()},
      {MHD_HTTP_HEADER_ALLOW, answer.Status == MHD_HTTP_METHOD_NOT_ALLOWED ? "GET, HEAD" : nullptr},
      {MHD_HTTP_HEADER_RETRY_AFTER, answer.Status == MHD_HTTP_SERVICE_UNAVAILABLE ? "1" : nullptr},
      {MHD_HTTP_HEADER_CONNECTION, answer.Closes ? "close" : nullptr},
  };
  for (const FixedHeader& header : own) {
    all = all && (header.Value == nullptr ||
                  MHD_add_response_header(response, header.Name, header.Value) == MHD_YES);
  }
  if (!all) {
    MHD_destroy_response(response);
    return nullptr;
  }
  return response;
}

}  // namespace serve
