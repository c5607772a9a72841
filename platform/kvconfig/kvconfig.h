// The process's settings: sections of one JSON file, the store, read by key and followed.
//
// A section is an object of the store's root. A missing section or key (null counts as missing)
// means the caller's default, silently. What cannot be read goes to the error handler as one line
// that names the file and the reason, once for each change.
#pragma once

#include <json/json.h>

#include <functional>
#include <memory>
#include <string>

namespace KvConfig {

// Where the store is; /etc/ovra.json until it is set. Called while no configuration object exists.
void SetStore(const std::string& path);

// Called on the thread that creates or reads an object and on the watch's thread.
using ErrorHandler = std::function<void(const std::string& error)>;

// Called on the watch's thread, one after the other. A removed key has the value null.
using ChangeHandler = std::function<void(const std::string& key, const Json::Value& value)>;
using ValueHandler = std::function<void(const Json::Value& value)>;

// Ends its subscription as it goes: the handler is not under way and is not called any more then.
// Inside the handler it does not wait. Its holder holds no lock that the handler takes.
class ISubscription {
 public:
  virtual ~ISubscription() = default;
};
using Subscription = std::unique_ptr<ISubscription>;

// Which keys a subscription hears.
enum class EMatch { EBeginning, EWhole };

// A section as it was when this object was created.
//
// Threads: every operation from any thread. The getters never throw: a value of another type, or an
// integer that is not stored as one or does not fit, is reported and the default returned.
class IReadOnlyConfig {
 public:
  virtual ~IReadOnlyConfig() = default;

  virtual bool GetBool(const std::string& key, bool defaultValue) const = 0;
  virtual int GetInt(const std::string& key, int defaultValue) const = 0;
  virtual std::string GetString(const std::string& key, const std::string& defaultValue) const = 0;
};

// A section as it is. While the store cannot be read, the last good values stay.
class IConfig : public IReadOnlyConfig {
 public:
  // Calls the handler with each new value of the keys that are, or begin with, the given one;
  // changes that follow each other quickly may come as one, the last value comes always. What the
  // handler throws is logged under the subscriber's name.
  [[nodiscard]] virtual Subscription Subscribe(const std::string& subscriber,
                                               const std::string& key, ValueHandler handler,
                                               EMatch match = EMatch::EBeginning) = 0;
};

// Both return an owning pointer, to be deleted on any thread but the watch's; the handlers are not
// called any more when it is gone. The watch runs from the first IConfig to the last.
//
// The change handler hears every change in the section and may be empty.
IConfig* Create(const std::string& section, ErrorHandler errorHandler, ChangeHandler changeHandler);

// Optional: neither a missing section nor a store that cannot be read is an error of this object;
// the report is left to the objects that need the store.
IReadOnlyConfig* CreateReadOnly(const std::string& section, ErrorHandler errorHandler,
                                bool optional);

// Writes one key of the store; null removes it. Everything else in the store is kept, as are its
// owner and mode; a missing store is created. The new store replaces the old one whole or, with a
// std::runtime_error that says why, not at all.
void Write(const std::string& section, const std::string& key, const Json::Value& value);

}  // namespace KvConfig
