// The Ethernet switch chip: each function takes a record that says what to do (op 1 set, write, add; 2 get,
// read; 3 clear, where a record does not say otherwise), does it, and fills the record's other fields on a
// read. All return 0 on success and non-zero on failure (also for a null record), and then leave the record
// as it was. Numbers are in the machine's byte order; ports count from 0; a port mask has bit n for port n.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// A register.
struct SwitchRegRecord {
  uint8_t op;
  uint32_t addr;
  uint32_t value;
};
// `op` repeats the record's op.
int rtl8367_reg_opt(struct SwitchRegRecord* record, int op);

// A register of the PHYs.
struct SwitchPhyRecord {
  uint8_t op;
  uint8_t addr;
  uint16_t value;
};
int rtl8367_phy_opt(struct SwitchPhyRecord* record);

// An entry of the VLAN table; op 3 clears the whole table.
struct SwitchVlanRecord {
  uint8_t op;
  uint32_t vid;
  uint32_t membermask;
  uint32_t untagmask;
  uint32_t fid;
};
int rtl8367_vlan_opt(struct SwitchVlanRecord* record);

// The VLAN and the priority of untagged frames that come in at a port.
struct SwitchPvidRecord {
  uint8_t op;
  uint32_t port;
  uint32_t pvid;
  uint32_t priority;
};
int rtl8367_pvid_opt(struct SwitchPvidRecord* record);

// The filtering id of a port.
struct SwitchEfidRecord {
  uint8_t op;
  uint32_t port;
  uint32_t efid;
};
int rtl8367_efid_opt(struct SwitchEfidRecord* record);

// The link settings (set) or link state (get) of a port.
struct PortStatusRecord {
  uint8_t op;
  uint32_t port;
  uint8_t autoneg;  // 1 negotiated, 0 forced, 2 left as it is
  uint8_t link;     // 1 up, 0 down
  uint8_t speed;    // 0 10, 1 100, 2 1000, 4 2500 Mbit/s
  uint8_t duplex;   // 1 full, 0 half
};
// `op` repeats the record's op, which alone decides.
int rtl8367_port_opt(struct PortStatusRecord* record, int op);

// The one port mirror.
struct SwitchMirrorRecord {
  uint8_t op;
  uint8_t isolation;  // 1 when the destination port carries mirrored frames only
  uint32_t destination_port;
  uint32_t tx_mask;  // source ports whose outgoing frames are mirrored
  uint32_t rx_mask;  // source ports whose incoming frames are mirrored
};
int rtl8367_mirror_opt(struct SwitchMirrorRecord* record);

// Frame counters: op 1 prints them on the stdio stream stdout, op 2 resets them.
struct SwitchMibRecord {
  uint8_t op;
  uint8_t scope;  // 1 one port, 2 the whole chip
  uint32_t port;
};
int rtl8367_mib_opt(struct SwitchMibRecord* record);

// An access entry by MAC address; deleting looks at mac_value alone.
struct AclMacRecord {
  uint32_t port_value;
  uint32_t port_mask;
  uint8_t mac_value[6];
  uint8_t mac_mask[6];
  uint8_t add;    // 1 add, 0 delete
  uint8_t match;  // 0 source MAC, 1 destination MAC
  uint32_t action;
};
int rtl8367_acl_opt(struct AclMacRecord* record);

// An access entry by a range of TCP and UDP ports; op 1 add, 0 delete.
struct SwitchAclPortRecord {
  uint8_t op;
  uint8_t type;  // 1 source port, 2 destination port
  uint32_t upper;
  uint32_t lower;
};
int rtl8367_acl_port_opt(struct SwitchAclPortRecord* record);

// An access entry by EtherType; op 1 add, 0 delete.
struct SwitchAclEtypeRecord {
  uint8_t op;
  uint8_t port_mask;
  uint16_t etype;
};
int rtl8367_acl_etype_opt(struct SwitchAclEtypeRecord* record);

// The rate limit of a port.
struct SwitchRateRecord {
  uint8_t op;
  uint8_t direction;  // 1 ingress, 2 egress
  uint8_t port;
  uint8_t set;    // 1 for a set, 0 for a get
  uint8_t zero;   // always 0
  uint32_t rate;  // kbit/s; 0xffff8 for no limit
};
int rtl8367_rate_ctl_opt(struct SwitchRateRecord* record);

// The clock delays of a port's RGMII interface, in steps of the chip.
struct SwitchDelayRecord {
  uint8_t op;
  uint32_t port;
  int32_t tx;
  int32_t rx;
};
int rtl8367_delay_opt(struct SwitchDelayRecord* record);

// The id of the switch.
struct SwitchIdRecord {
  uint8_t op;
  uint32_t id;
};
int rtl8367_switch_id_opt(struct SwitchIdRecord* record);

// Switches all PHYs of the board on (1) or off (0). `chip_type`: 1 the processor's own switch, 2 an attached
// switch chip, 3 not said, both.
int turn_on_phy(int on, int chip_type);

#ifdef __cplusplus
}
#endif
