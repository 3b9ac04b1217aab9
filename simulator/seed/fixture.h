#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantry_sim {

// The state of a server as plain records: what a state file says, and what an export writes. Everything that
// is addressed by others has an id, which is the one that the wire shows. An empty id is to be made up.

/// The bytes of a content, in one of the forms that a state file has for them.
struct FixtureBytes {
  enum class Kind {
    None,       ///< there are none: the content has no stream
    Inline,     ///< `text`
    File,       ///< the file of this name
    Generated,  ///< `size` bytes made from `generator`
    Stream,     ///< those that the stream with this number has already
  };
  Kind kind = Kind::None;
  std::string text;
  std::filesystem::path file;
  std::uint64_t size = 0;
  std::optional<std::int64_t> generator;  ///< nothing: the number of the stream
  std::optional<std::int64_t> stream;     ///< the number that it should have
};

struct FixtureContent {
  std::string id;
  std::string category;
  std::string fileName;
  bool isForwardable = false;
  bool isStale = false;
  bool isHidden = false;
  FixtureBytes bytes;
};

struct FixtureAttribute {
  std::string parameterName;
  std::string attributeName;
  std::string valueType;
  std::string value;
};

struct FixtureDependency {
  std::string childName;
  std::string source;  ///< id of a version
  bool isDirect = true;
  std::int64_t revisionNumber = 0;
  bool isPlaceHolder = false;
  bool hasCompleteDependencies = true;
};

/// One iteration: a version, or a working copy.
struct FixtureVersion {
  std::uint32_t line = 0;
  std::string id;
  std::string revision;
  std::int64_t iteration = 1;
  std::string folder;        ///< id; empty for one that was never checked in
  std::string workspace;     ///< id; set for a working copy, and for what was never checked in
  std::string targetFolder;  ///< id; where the first check-in will put it; empty: the context's root
  std::string authAppVersion;
  std::string ndVersion;
  std::string comment;
  std::string modified;  ///< empty: the time of the seeding
  std::vector<FixtureContent> primary;
  std::vector<FixtureContent> secondary;
  std::vector<FixtureAttribute> attributes;
  std::vector<FixtureDependency> dependencies;
  std::string xliff;  ///< id of the version that is its source XLIFF; empty: none
};

struct FixtureDocument {
  std::uint32_t line = 0;
  std::string id;  ///< of what its versions share
  std::string name;
  std::string number;
  std::string cadName;
  std::string service;
  std::string category;
  std::string subCategory;
  std::string application;
  std::string typeId;
  std::string context;                     ///< id
  std::string translationOf;               ///< id of the document that is the source XLIFF; empty: none
  std::vector<FixtureVersion> versions;    ///< the oldest first
  std::optional<FixtureVersion> checkout;  ///< the working copy of the last version
};

struct FixtureFolder {
  std::uint32_t line = 0;
  std::string id;
  std::string name;
  std::vector<FixtureFolder> folders;
};

struct FixtureContext {
  std::uint32_t line = 0;
  std::string id;
  std::string kind;
  std::string name;
  std::string organization;
  std::vector<FixtureFolder> roots;
};

struct FixtureWorkspace {
  std::uint32_t line = 0;
  std::string id;
  std::string name;
  std::string owner;
  std::string context;  ///< id
  std::string description;
  std::vector<std::string> documents;  ///< ids of versions that it holds without a checkout
};

struct FixtureUser {
  std::string name;
  std::string fullName;
};

struct Fixture {
  std::vector<FixtureUser> users;
  std::vector<FixtureContext> contexts;
  std::vector<FixtureWorkspace> workspaces;
  std::vector<FixtureDocument> documents;
  std::vector<std::pair<std::string, std::string>> applicationVersions;
  std::int64_t nextId = 0;         ///< number of the next id that the server gives; 0: as in a new one
  std::vector<std::string> order;  ///< ids of all iterations in the order of their making; empty: as they are
};

}  // namespace vantry_sim
