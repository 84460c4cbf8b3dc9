// Walking payloads.
#include "shell/record_walk.h"

namespace {

constexpr FieldType kString = {FieldType::kString, 1};
constexpr FieldType kUnused = {FieldType::kUnused, 1};

}  // namespace

void RecordWalk::part(std::string_view name, const FieldType& type, uint32_t offset) {
  if (type.is_plain()) {
    plain(name, type, offset, type.size);
  } else if (type.kind == FieldType::kRecord) {
    visitor_.begin_record(name, offset);
    part_members(*type.record, offset);
    visitor_.end_record();
  } else {
    visitor_.begin_list(name, offset, type.count);
    for (uint32_t i = 0; i < type.count; ++i) part({}, *type.element, offset + i * type.element->size);
    visitor_.end_list();
  }
}

void RecordWalk::part_members(const RecordType& type, uint32_t offset) {
  for (const RecordType::Member& member : type.members) {
    part(member.name, *member.type, offset + member.offset);
  }
}

bool RecordWalk::members(const RecordType& type) {
  const uint32_t start = at_;
  if (room() >= type.size) {
    part_members(type, start);
    at_ += type.size;
    if (type.each_list != nullptr) lists(type, payload_.data() + start);
    return true;
  }
  for (const RecordType::Member& member : type.members) {
    if (member.offset + member.type->size > end_ - start) break;
    part(member.name, *member.type, start + member.offset);
    at_ = start + member.offset + member.type->size;
  }
  unnamed(room());
  return false;
}

void RecordWalk::lists(const RecordType& type, const uint8_t* record) {
  const uint32_t start = at_;
  const uint32_t whole_end = end_;
  const auto bounds = type.list_bytes == nullptr ? RecordType::Bounds{} : type.list_bytes(record);
  end_ = start + std::min(bounds.most, room());
  type.each_list(record, this,
                 [](void* self, std::string_view name, const FieldType& element, uint32_t count) {
                   auto& walk = *static_cast<RecordWalk*>(self);
                   if (element.kind == FieldType::kString) {
                     walk.string(name, count);
                   } else {
                     walk.list(name, element, count);
                   }
                 });
  end_ = whole_end;
  if (at_ - start < bounds.least) go_to(start + std::min(bounds.least, end_ - start));
}

bool RecordWalk::value(std::string_view name, const FieldType& type) {
  if (type.kind == FieldType::kRecord) {
    visitor_.begin_record(name, at_);
    const bool is_whole = members(*type.record);
    visitor_.end_record();
    return is_whole;
  }
  if (room() < type.size) {
    unnamed(room());
    return false;
  }
  part(name, type, at_);
  at_ += type.size;
  return true;
}

// Where an element does not fit, what is left of the payload is nothing else's either.
bool RecordWalk::list(std::string_view name, const FieldType& element, int64_t claimed) {
  visitor_.begin_list(name, at_, claimed);
  int64_t left = std::max(claimed, int64_t{0});
  while (left > 0 && room() >= element.size && value({}, element)) --left;
  visitor_.end_list();
  if (left > 0) unnamed(room());
  return left == 0;
}

void RecordWalk::string(std::string_view name, uint32_t length) {
  const uint32_t size = std::min(length, room());
  plain(name, kString, at_, size);
  at_ += size;
}

void RecordWalk::unnamed(uint32_t size) {
  if (size > room()) size = room();
  if (size > 0) plain({}, kUnused, at_, size);
  at_ += size;
}

void RecordWalk::rest() {
  if (room() > 0) visitor_.rest(at_, payload_.subspan(at_));
  at_ = end_;
}
