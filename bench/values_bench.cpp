// Tables of values against maps of variants, JSON documents and MessagePack.

#include <kalvobase/kalvobase.h>

#include <cstdint>
#include <map>
#include <msgpack.hpp>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

#include "duel.h"

namespace {

using Variant = std::variant<std::monostate, std::int64_t, double, std::string>;
using Map = std::map<std::string, Variant>;

std::vector<std::string> Keys(int count) {
  std::vector<std::string> keys;
  for (int i = 0; i < count; ++i) {
    // Scattered, so that no side meets its keys in an order that suits it.
    keys.push_back("metric." + std::to_string(static_cast<unsigned>(i) * 2654435761u % 100000));
  }
  return keys;
}

// --- Inserting and looking up ---------------------------------------------------------

void FillTable(Kalvo_KValueTable* table, const std::vector<std::string>& keys) {
  for (const std::string& key : keys) table->Set(key.c_str(), 42L);
}

void FillMap(Map* map, const std::vector<std::string>& keys) {
  for (const std::string& key : keys) (*map)[key] = std::int64_t{42};
}

void InsertIntoTable(benchmark::State& state) {
  const std::vector<std::string> keys = Keys(100);
  for (auto _ : state) {
    Kalvo_KValueTable table;
    FillTable(&table, keys);
    benchmark::DoNotOptimize(table.GetCount());
  }
}

void InsertIntoMap(benchmark::State& state) {
  const std::vector<std::string> keys = Keys(100);
  for (auto _ : state) {
    Map map;
    FillMap(&map, keys);
    benchmark::DoNotOptimize(map.size());
  }
}

duel::Body LookUpInTable(int count) {
  return [count](benchmark::State& state) {
    const std::vector<std::string> keys = Keys(count);
    Kalvo_KValueTable table;
    FillTable(&table, keys);
    for (auto _ : state) {
      long sum = 0;
      for (const std::string& key : keys) sum += table.GetValue(key.c_str())->GetLong();
      benchmark::DoNotOptimize(sum);
    }
  };
}

duel::Body LookUpInMap(int count) {
  return [count](benchmark::State& state) {
    const std::vector<std::string> keys = Keys(count);
    Map map;
    FillMap(&map, keys);
    for (auto _ : state) {
      std::int64_t sum = 0;
      for (const std::string& key : keys) sum += std::get<std::int64_t>(map.find(key)->second);
      benchmark::DoNotOptimize(sum);
    }
  };
}

// --- 1,000 mixed values ---------------------------------------------------------------

// The same content for each side: of five entries two integers, a double, a text, and the
// fifth a short text.
template <class SetInteger, class SetReal, class SetText>
void Fill(SetInteger setInteger, SetReal setReal, SetText setText) {
  const std::vector<std::string> keys = Keys(1000);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const char* key = keys[i].c_str();
    switch (i % 5) {
      case 0:
        setInteger(key, static_cast<int>(i));
        break;
      case 1:
        setInteger(key, -static_cast<int>(i * 7919));
        break;
      case 2:
        setReal(key, static_cast<double>(i) / 7);
        break;
      case 3:
        setText(key, "a text of some forty bytes, as logs have");
        break;
      default:
        setText(key, "running");
        break;
    }
  }
}

void FillMixed(Kalvo_KValueTable* table) {
  Fill([table](const char* key, int n) { table->Insert(key)->Set(n); },
       [table](const char* key, double d) { table->Insert(key)->Set(d); },
       [table](const char* key, const char* s) { table->Set(key, s); });
}

nlohmann::json MixedJson() {
  nlohmann::json json;
  const auto set = [&json](const char* key, auto value) { json[key] = value; };
  Fill(set, set, set);
  return json;
}

Map MixedMap() {
  Map map;
  Fill([&map](const char* key, int n) { map[key] = std::int64_t{n}; },
       [&map](const char* key, double d) { map[key] = d; },
       [&map](const char* key, const char* s) { map[key] = std::string(s); });
  return map;
}

struct Packing {
  msgpack::packer<msgpack::sbuffer>* packer;
  void operator()(std::monostate) const { packer->pack_nil(); }
  template <class T>
  void operator()(const T& value) const {
    packer->pack(value);
  }
};

void PackMap(const Map& map, msgpack::sbuffer* buffer) {
  msgpack::packer<msgpack::sbuffer> packer(buffer);
  packer.pack_map(static_cast<std::uint32_t>(map.size()));
  for (const auto& [key, value] : map) {
    packer.pack(key);
    std::visit(Packing{&packer}, value);
  }
}

Map UnpackMap(const msgpack::sbuffer& buffer) {
  Map map;
  const msgpack::object_handle handle = msgpack::unpack(buffer.data(), buffer.size());
  const msgpack::object_map& pairs = handle.get().via.map;
  for (std::uint32_t i = 0; i < pairs.size; ++i) {
    const msgpack::object& value = pairs.ptr[i].val;
    Variant& variant = map[pairs.ptr[i].key.as<std::string>()];
    switch (value.type) {
      case msgpack::type::FLOAT32:
      case msgpack::type::FLOAT64:
        variant = value.as<double>();
        break;
      case msgpack::type::STR:
        variant = value.as<std::string>();
        break;
      case msgpack::type::NIL:
        break;
      default:
        variant = value.as<std::int64_t>();
        break;
    }
  }
  return map;
}

void DumpTable(benchmark::State& state) {
  Kalvo_KValueTable table;
  FillMixed(&table);
  for (auto _ : state) {
    Kalvo_String form;
    benchmark::DoNotOptimize(table.Dump(&form));
  }
}

void DumpJson(benchmark::State& state) {
  const nlohmann::json json = MixedJson();
  for (auto _ : state) {
    const std::vector<std::uint8_t> form = nlohmann::json::to_msgpack(json);
    benchmark::DoNotOptimize(form.data());
  }
}

void DumpMsgpack(benchmark::State& state) {
  const Map map = MixedMap();
  for (auto _ : state) {
    msgpack::sbuffer buffer;
    PackMap(map, &buffer);
    benchmark::DoNotOptimize(buffer.data());
  }
}

void ImportTable(benchmark::State& state) {
  Kalvo_KValueTable source;
  FillMixed(&source);
  Kalvo_String form;
  source.Dump(&form);
  for (auto _ : state) {
    Kalvo_KValueTable table;
    table.Import(form.c_str(), static_cast<int>(form.length()));
    benchmark::DoNotOptimize(table.GetCount());
  }
}

void ImportJson(benchmark::State& state) {
  const std::vector<std::uint8_t> form = nlohmann::json::to_msgpack(MixedJson());
  for (auto _ : state) {
    const nlohmann::json json = nlohmann::json::from_msgpack(form);
    benchmark::DoNotOptimize(json.size());
  }
}

void ImportMsgpack(benchmark::State& state) {
  msgpack::sbuffer buffer;
  PackMap(MixedMap(), &buffer);
  for (auto _ : state) {
    const Map map = UnpackMap(buffer);
    benchmark::DoNotOptimize(map.size());
  }
}

void CopyTable(benchmark::State& state) {
  Kalvo_KValueTable source;
  FillMixed(&source);
  for (auto _ : state) {
    Kalvo_KValueTable copy(source);
    benchmark::DoNotOptimize(copy.GetCount());
  }
}

void CopyJson(benchmark::State& state) {
  const nlohmann::json source = MixedJson();
  for (auto _ : state) {
    const nlohmann::json copy(source);  // NOLINT(performance-unnecessary-copy-initialization)
    benchmark::DoNotOptimize(copy.size());
  }
}

[[maybe_unused]] const bool registered = [] {
  const char* const kMap = "std::map<std::string, std::variant>";
  duel::Ours("insert 100 text keys", InsertIntoTable);
  duel::Peer("insert 100 text keys", kMap, 0.5, InsertIntoMap);
  duel::Ours("look up 100 text keys", LookUpInTable(100));
  duel::Peer("look up 100 text keys", kMap, 1.0, LookUpInMap(100));
  duel::Ours("look up 5,000 text keys", LookUpInTable(5000));
  duel::Peer("look up 5,000 text keys", kMap, 0, LookUpInMap(5000));
  duel::Ours("dump 1,000 mixed values", DumpTable);
  duel::Peer("dump 1,000 mixed values", "nlohmann::json::to_msgpack", 3.0, DumpJson);
  duel::Peer("dump 1,000 mixed values", "msgpack::packer", 0.5, DumpMsgpack);
  duel::Ours("import 1,000 mixed values", ImportTable);
  duel::Peer("import 1,000 mixed values", "nlohmann::json::from_msgpack", 2.0, ImportJson);
  duel::Peer("import 1,000 mixed values", "msgpack::unpack, to a map", 0.5, ImportMsgpack);
  duel::Ours("copy 1,000 mixed values", CopyTable);
  duel::Peer("copy 1,000 mixed values", "copy of nlohmann::json", 1.0, CopyJson);
  return true;
}();

}  // namespace
