// INI documents against SimpleIni and the property trees of Boost.

#define SI_NO_CONVERSION
#include <SimpleIni.h>
#include <kalvobase/kalvobase.h>

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "duel.h"
#include "folder.h"

namespace {

namespace pt = boost::property_tree;

constexpr int kSections = 1000;
constexpr int kKeys = 100;  // in each
constexpr int kLookUps = 10000;

std::string Section(int i) { return "section " + std::to_string(i % kSections); }
std::string Key(int i) { return "key" + std::to_string(i % kKeys); }

const std::string& Document() {
  static const std::string path = [] {
    std::string name = Folder::Path("document.ini");
    std::ofstream out(name, std::ios::binary);
    for (int s = 0; s < kSections; ++s) {
      out << "# what section " << s << " is about\n[" << Section(s) << "]\n";
      for (int k = 0; k < kKeys; ++k) {
        if (k % 10 == 0) out << "; what follows\n";
        out << Key(k) << " = value number " << s * k << "\n";
      }
      out << "\n";
    }
    return name;
  }();
  return path;
}

void Read() {
  const std::string work = "read an INI file of 100,000 keys";
  duel::Ours(work, [](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(Kalvo_XIni(Document().c_str()).GetKVCount());
  });
  duel::Peer(work, "SimpleIni", 0.7, [](benchmark::State& state) {
    for (auto _ : state) {
      CSimpleIniA ini;
      ini.LoadFile(Document().c_str());
      benchmark::DoNotOptimize(ini.GetSectionSize("section 0"));
    }
  });
  duel::Peer(work, "boost::property_tree", 2.0, [](benchmark::State& state) {
    for (auto _ : state) {
      pt::ptree tree;
      pt::read_ini(Document(), tree);
      benchmark::DoNotOptimize(tree.size());
    }
  });
}

void LookUp() {
  const std::string work = "look up 10,000 keys by path";
  duel::Ours(work, [](benchmark::State& state) {
    Kalvo_XIni ini(Document().c_str());
    for (auto _ : state) {
      for (int i = 0; i < kLookUps; ++i) {
        ini.SetSectionName("section %d", i % kSections);
        benchmark::DoNotOptimize(ini.ReadString(Key(i).c_str(), nullptr));
      }
    }
  });
  duel::Peer(work, "SimpleIni", 0.7, [](benchmark::State& state) {
    CSimpleIniA ini;
    ini.LoadFile(Document().c_str());
    for (auto _ : state) {
      for (int i = 0; i < kLookUps; ++i) {
        benchmark::DoNotOptimize(ini.GetValue(Section(i).c_str(), Key(i).c_str()));
      }
    }
  });
  duel::Peer(work, "boost::property_tree", 1.0, [](benchmark::State& state) {
    pt::ptree tree;
    pt::read_ini(Document(), tree);
    for (auto _ : state) {
      for (int i = 0; i < kLookUps; ++i) {
        const pt::ptree::path_type path(Section(i) + "/" + Key(i), '/');
        benchmark::DoNotOptimize(tree.get_optional<std::string>(path));
      }
    }
  });
}

void Save() {
  const std::string work = "save an INI file of 100,000 keys";
  duel::Ours(work, [](benchmark::State& state) {
    const std::string path = Folder::Path("saved.ini");
    Kalvo_XIni ini(Document().c_str());
    for (auto _ : state) ini.Dump(path.c_str());
  });
  duel::Peer(work, "SimpleIni", 1.0, [](benchmark::State& state) {
    const std::string path = Folder::Path("saved.ini");
    CSimpleIniA ini;
    ini.LoadFile(Document().c_str());
    for (auto _ : state) ini.SaveFile(path.c_str());
  });
  duel::Peer(work, "boost::property_tree", 2.0, [](benchmark::State& state) {
    const std::string path = Folder::Path("saved.ini");
    pt::ptree tree;
    pt::read_ini(Document(), tree);
    for (auto _ : state) pt::write_ini(path, tree);
  });
}

[[maybe_unused]] const bool registered = [] {
  Read();
  LookUp();
  Save();
  return true;
}();

}  // namespace
