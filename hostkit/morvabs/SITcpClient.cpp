#include "host/SITcpClient.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/ip/address.hpp>
#include <asio/ip/tcp.hpp>
#include <netdb.h>
#include <sys/socket.h>

#include "host/utf8.h"
#include "morvabs/file_access.h"

namespace {

using Clock = std::chrono::steady_clock;
using Endpoint = asio::ip::tcp::endpoint;

constexpr std::chrono::milliseconds timeout(3000);

struct Addresses {
  std::vector<Endpoint> endpoints;
  int error = 0;
};

/// A question to the resolver, with everything that must stay while it is being answered.
struct Lookup {
  std::string host;
  gaicb request{};
  addrinfo hints{};

  explicit Lookup(std::string name) : host(std::move(name)) {
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    request.ar_name = host.c_str();
    request.ar_request = &hints;
  }
  ~Lookup() {
    if (request.ar_result != nullptr) {
      ::freeaddrinfo(request.ar_result);
    }
  }
  Lookup(Lookup const&) = delete;
  Lookup& operator=(Lookup const&) = delete;
};

timespec time_until(Clock::time_point deadline) {
  auto const left = std::max(deadline - Clock::now(), Clock::duration::zero());
  auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  return {static_cast<std::time_t>(seconds.count()),
          static_cast<long>(std::chrono::nanoseconds(left - seconds).count())};
}

/// Waits for the answer to a question; false when it has not come in time.
bool wait_for(Lookup& lookup, Clock::time_point deadline) {
  gaicb const* const list[] = {&lookup.request};
  while (::gai_error(&lookup.request) == EAI_INPROGRESS && Clock::now() < deadline) {
    timespec const left = time_until(deadline);
    ::gai_suspend(list, 1, &left);
  }
  return ::gai_error(&lookup.request) != EAI_INPROGRESS ||
         ::gai_cancel(&lookup.request) != EAI_NOTCANCELED;
}

Addresses ask_resolver(std::string const& host, unsigned short port, Clock::time_point deadline) {
  auto lookup = std::make_unique<Lookup>(host);
  gaicb* list[] = {&lookup->request};
  if (::getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr) != 0) {
    return {{}, EAGAIN};
  }
  if (!wait_for(*lookup, deadline)) {
    // The system still writes to it; a question that hangs costs these bytes rather than the
    // caller.
    static_cast<void>(lookup.release());
    return {{}, ETIMEDOUT};
  }
  if (::gai_error(&lookup->request) != 0) {
    return {{}, EHOSTUNREACH};
  }
  Addresses found;
  for (addrinfo const* item = lookup->request.ar_result; item != nullptr; item = item->ai_next) {
    Endpoint endpoint;
    if (item->ai_addrlen <= endpoint.capacity()) {
      std::copy_n(reinterpret_cast<char const*>(item->ai_addr), item->ai_addrlen,
                  reinterpret_cast<char*>(endpoint.data()));
      endpoint.port(port);
      found.endpoints.push_back(endpoint);
    }
  }
  found.error = found.endpoints.empty() ? EHOSTUNREACH : 0;
  return found;
}

Addresses find_addresses(std::string const& host, unsigned short port, Clock::time_point deadline) {
  asio::error_code error;
  auto const address = asio::ip::make_address(host, error);
  if (!error) {
    return {{Endpoint(address, port)}, 0};
  }
  return ask_resolver(host, port, deadline);
}

}  // namespace

struct SITcpClient::Connection {
  asio::io_context context;
  asio::ip::tcp::socket socket{context};

  int connect(Endpoint const& endpoint, Clock::time_point deadline);

 private:
  asio::error_code open(Endpoint const& endpoint);
};

/// Opened here, as a socket that Asio opens would be inherited by programs that the host starts.
asio::error_code SITcpClient::Connection::open(Endpoint const& endpoint) {
  asio::error_code error;
  socket.close(error);
  morvabs::FileDescriptor opened(
      ::socket(endpoint.protocol().family(), SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP));
  if (!opened.is_open()) {
    return {errno, asio::system_category()};
  }
  socket.assign(endpoint.protocol(), opened.get(), error);
  if (!error) {
    opened.release();
  }
  return error;
}

int SITcpClient::Connection::connect(Endpoint const& endpoint, Clock::time_point deadline) {
  if (asio::error_code const error = open(endpoint)) {
    return error.value();
  }
  asio::error_code result = asio::error::would_block;
  asio::error_code ignored;
  context.restart();
  socket.async_connect(endpoint, [&result](asio::error_code const& error) { result = error; });
  context.run_until(deadline);
  if (result == asio::error::would_block) {
    socket.close(ignored);
    context.restart();
    context.run();
    return ETIMEDOUT;
  }
  return result.value();
}

SITcpClient::SITcpClient() = default;

SITcpClient::~SITcpClient() = default;

int SITcpClient::connect(bool /*reserved*/) {
  connection_.reset();
  std::string const host = morvabs::to_utf8(mstr_server.get_ws());
  bool const is_host = !host.empty() && host.find('\0') == std::string::npos;
  if (!is_host || mi_port < 1 || mi_port > 0xFFFF) {
    return EINVAL;
  }
  auto const deadline = Clock::now() + timeout;
  Addresses const found = find_addresses(host, static_cast<unsigned short>(mi_port), deadline);
  int error = found.error;
  try {
    auto connection = std::make_unique<Connection>();
    auto left = static_cast<int>(found.endpoints.size());
    for (Endpoint const& endpoint : found.endpoints) {
      // One silent address must not use up the time of the others.
      auto const share = (deadline - Clock::now()) / left--;
      error = connection->connect(endpoint, Clock::now() + share);
      if (error == 0) {
        connection_ = std::move(connection);
        break;
      }
    }
  } catch (std::system_error const& failure) {
    error = failure.code().value();
  }
  return error;
}
