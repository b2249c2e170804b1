// Files and sockets against streams of the standard library, stdio, std::filesystem and plain
// socket calls.

#include <arpa/inet.h>
#include <fcntl.h>
#include <kalvobase/kalvobase.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "duel.h"
#include "folder.h"

namespace {

namespace fs = std::filesystem;

// --- Lines ----------------------------------------------------------------------------

constexpr int kTextBytes = 64 << 20;
constexpr int kWrittenLines = 10000000;
constexpr char kName[] = "eth0";

const std::string& TextFile() {
  static const std::string path = [] {
    std::string name = Folder::Path("text");
    std::ofstream out(name, std::ios::binary);
    std::uint32_t state = 1;
    for (int written = 0; written < kTextBytes;) {
      state = state * 1664525u + 1013904223u;
      const std::string line(20 + (state >> 26), 'x');  // 20 to 83 bytes
      out << line << '\n';
      written += static_cast<int>(line.size()) + 1;
    }
    return name;
  }();
  return path;
}

void ReadLines() {
  const std::string work = "read 64 MiB of text line by line";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string& path = TextFile();
    for (auto _ : state) {
      Kalvo_FileStream file;
      file.Open(path.c_str(), O_RDONLY, 0);
      long lines = 0;
      while (const char* line = file.ReadLine(1, -1)) {
        benchmark::DoNotOptimize(line);
        ++lines;
      }
      benchmark::DoNotOptimize(lines);
    }
  });
  duel::Peer(work, "std::getline", 1.5, [](benchmark::State& state) {
    const std::string& path = TextFile();
    for (auto _ : state) {
      std::ifstream file(path, std::ios::binary);
      long lines = 0;
      for (std::string line; std::getline(file, line); ++lines) benchmark::DoNotOptimize(line);
      benchmark::DoNotOptimize(lines);
    }
  });
}

void WriteLines() {
  const std::string work = "write 10 million formatted lines";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string path = Folder::Path("lines");
    for (auto _ : state) {
      Kalvo_FileStream file;
      file.Open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      // A line feed of the format would be sent at once, as std::endl does.
      for (int i = 0; i < kWrittenLines; ++i) file.Printf("%s: %d items%s", kName, i, "\n");
    }
  });
  duel::Peer(work, "std::ofstream <<", 1.5, [](benchmark::State& state) {
    const std::string path = Folder::Path("lines");
    for (auto _ : state) {
      std::ofstream file(path, std::ios::binary);
      for (int i = 0; i < kWrittenLines; ++i) file << kName << ": " << i << " items\n";
    }
  });
  duel::Peer(work, "fprintf", 1.0, [](benchmark::State& state) {
    const std::string path = Folder::Path("lines");
    for (auto _ : state) {
      std::FILE* file = std::fopen(path.c_str(), "wb");
      for (int i = 0; i < kWrittenLines; ++i) std::fprintf(file, "%s: %d items\n", kName, i);
      std::fclose(file);
    }
  });
}

// --- Numbers --------------------------------------------------------------------------

constexpr int kNumbers = 1000000;

// Without a byte 10, which would be sent at once like a line feed.
const std::vector<std::uint32_t>& Numbers() {
  static const std::vector<std::uint32_t> numbers = [] {
    std::vector<std::uint32_t> result;
    std::uint32_t state = 1;
    while (result.size() < kNumbers) {
      state = state * 1664525u + 1013904223u;
      const unsigned char bytes[] = {
          static_cast<unsigned char>(state), static_cast<unsigned char>(state >> 8),
          static_cast<unsigned char>(state >> 16), static_cast<unsigned char>(state >> 24)};
      if (std::count(bytes, bytes + 4, 10) == 0) result.push_back(state);
    }
    return result;
  }();
  return numbers;
}

const std::string& NumbersFile() {
  static const std::string path = [] {
    std::string name = Folder::Path("numbers");
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(Numbers().data()), kNumbers * 4);
    return name;
  }();
  return path;
}

void WriteNumbers() {
  const std::string work = "write 1 million numbers of 4 bytes";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string path = Folder::Path("numbers written");
    for (auto _ : state) {
      Kalvo_FileStream file;
      file.Open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      for (const unsigned int number : Numbers()) file.Write(number);
    }
  });
  duel::Peer(work, "fwrite", 1.5, [](benchmark::State& state) {
    const std::string path = Folder::Path("numbers written");
    for (auto _ : state) {
      std::FILE* file = std::fopen(path.c_str(), "wb");
      for (const unsigned int number : Numbers()) std::fwrite(&number, 4, 1, file);
      std::fclose(file);
    }
  });
}

void ReadNumbers() {
  const std::string work = "read 1 million numbers of 4 bytes";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string& path = NumbersFile();
    for (auto _ : state) {
      Kalvo_FileStream file;
      file.Open(path.c_str(), O_RDONLY, 0);
      unsigned int sum = 0;
      for (unsigned int number = 0; file.Read(number) > 0;) sum += number;
      benchmark::DoNotOptimize(sum);
    }
  });
  duel::Peer(work, "fread", 1.5, [](benchmark::State& state) {
    const std::string& path = NumbersFile();
    for (auto _ : state) {
      std::FILE* file = std::fopen(path.c_str(), "rb");
      unsigned int sum = 0;
      for (unsigned int number = 0; std::fread(&number, 4, 1, file) == 1;) sum += number;
      benchmark::DoNotOptimize(sum);
      std::fclose(file);
    }
  });
}

// --- Whole files and directories ------------------------------------------------------

constexpr int kCopiedMib = 256;
constexpr int kListedFiles = 10000;

const std::string& LargeFile() {
  static const std::string path = [] {
    std::string name = Folder::Path("large");
    std::ofstream out(name, std::ios::binary);
    const std::string mib(1 << 20, 'x');
    for (int i = 0; i < kCopiedMib; ++i) out << mib;
    return name;
  }();
  return path;
}

void CopyFile() {
  const std::string work = "copy a file of 256 MiB";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string& source = LargeFile();
    const std::string copy = Folder::Path("copy");
    for (auto _ : state) {
      if (Kalvo_FileSafeCopy(source.c_str(), copy.c_str(), 1) < 0) state.SkipWithError("no copy");
      state.PauseTiming();
      fs::remove(copy);
      state.ResumeTiming();
    }
  });
  duel::Peer(work, "std::filesystem::copy_file", 0.5, [](benchmark::State& state) {
    const std::string& source = LargeFile();
    const std::string copy = Folder::Path("copy");
    for (auto _ : state) {
      fs::copy_file(source, copy, fs::copy_options::overwrite_existing);
      state.PauseTiming();
      fs::remove(copy);
      state.ResumeTiming();
    }
  });
}

const std::string& ListedFolder() {
  static const std::string path = [] {
    std::string name = Folder::Path("listed");
    fs::create_directories(name);
    for (int i = 0; i < kListedFiles; ++i) {
      std::ofstream(name + "/sample-" + std::to_string(i * 7919 % kListedFiles) + ".log");
    }
    return name;
  }();
  return path;
}

void ListDirectory() {
  const std::string work = "list 10,000 files, sorted by name";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string& path = ListedFolder();
    for (auto _ : state) {
      Kalvo_FindFiles files;
      files.Find(path.c_str());
      files.QSortByName();
      benchmark::DoNotOptimize(files.FindFirst());
    }
  });
  duel::Peer(work, "directory_iterator, status, std::sort", 0.7, [](benchmark::State& state) {
    const std::string& path = ListedFolder();
    for (auto _ : state) {
      std::vector<std::pair<std::string, fs::file_status>> files;
      for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
        files.emplace_back(entry.path().filename().string(), fs::status(entry.path()));
      }
      std::sort(files.begin(), files.end(),
                [](const auto& a, const auto& b) { return a.first < b.first; });
      benchmark::DoNotOptimize(files.data());
    }
  });
}

// --- Loopback -------------------------------------------------------------------------

constexpr int kEchoed = 1000;

// A thread that sends back what comes, on plain calls.
class EchoServer {
 public:
  EchoServer() : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
    listen(listener_, 1);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);
    thread_ = std::thread([this] { Run(); });
  }
  ~EchoServer() {
    thread_.join();
    close(listener_);
  }

  int port;

 private:
  void Run() {
    const int client = accept(listener_, nullptr, nullptr);
    char bytes[4096];
    for (ssize_t n; (n = recv(client, bytes, sizeof(bytes), 0)) > 0;) {
      if (send(client, bytes, static_cast<std::size_t>(n), MSG_NOSIGNAL) != n) break;
    }
    close(client);
  }

  int listener_;
  std::thread thread_;
};

// A value of 4 bytes to the other side and back, `atOnce` of them under way together.
void Echo(const std::string& work, int atOnce) {
  duel::Ours(work, [atOnce](benchmark::State& state) {
    EchoServer server;
    Kalvo_TcpStream stream;
    stream.Connect("127.0.0.1", server.port);
    for (auto _ : state) {
      for (int sent = 0; sent < kEchoed; sent += atOnce) {
        for (int i = 0; i < atOnce; ++i) stream.Write(0x01020304);
        stream.Write();
        int value = 0;
        for (int i = 0; i < atOnce; ++i) stream.Read(value);
        benchmark::DoNotOptimize(value);
      }
    }
    stream.DisConnect();
  });
  duel::Peer(work, "send and recv", 1.0, [atOnce](benchmark::State& state) {
    EchoServer server;
    Kalvo_SocketAddr address;
    address.Init("127.0.0.1", server.port);
    const int sock = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(sock, address.GetInfo()->ai_addr, address.GetInfo()->ai_addrlen) != 0) {
      state.SkipWithError("no connection");
    }
    for (auto _ : state) {
      for (int sent = 0; sent < kEchoed; sent += atOnce) {
        for (int i = 0; i < atOnce; ++i) {
          const std::uint32_t value = htonl(0x01020304);
          if (send(sock, &value, sizeof(value), MSG_NOSIGNAL) != 4) state.SkipWithError("send");
        }
        for (int i = 0; i < atOnce; ++i) {
          std::uint32_t value = 0;
          if (recv(sock, &value, sizeof(value), MSG_WAITALL) != 4) state.SkipWithError("recv");
          benchmark::DoNotOptimize(ntohl(value));
        }
      }
    }
    close(sock);
  });
}

const int registered = [] {
  ReadLines();
  WriteLines();
  WriteNumbers();
  ReadNumbers();
  CopyFile();
  ListDirectory();
  Echo("echo 1,000 numbers, one by one", 1);
  Echo("echo 1,000 numbers, 100 at once", 100);
  return 0;
}();

}  // namespace
