/** @defgroup mgmtmsg_codes Named codes
 * @brief mgmtmsg: the enumeration values that C callers pass and read as
 * integers (`common/mgmtmsg_codes.h`).
 *
 * Constants only: the header declares no function and needs no library. Each
 * group carries the numeric values of one enumeration of the schemas (the
 * gNMI schema and the south IPC schema), or of the gRPC status codes that
 * travel as a `result`; the entry points take and return these numbers
 * unchanged, values outside a group included.
 * @{
 */
/** @file
 * Named codes of the schemas' enumerations: see @ref mgmtmsg_codes. */
#ifndef MGMTMSG_COMMON_CODES_H
#define MGMTMSG_COMMON_CODES_H

/** SouthMsg req_type (GRPCI_SouthMsgSetReqType, GRPCI_SouthMsgGetReqType). */
enum GRPCI_ReqType {
  GRPCI_REQTYPE_INVALID = 0,     /**< not set */
  GRPCI_REQTYPE_REQUEST = 1,     /**< a request */
  GRPCI_REQTYPE_RESPONSE = 2,    /**< the answer to a request */
  GRPCI_REQTYPE_NOTIFICATION = 3 /**< a notification, unasked */
};

/** SouthMsg op_type (GRPCI_SouthMsgSetOpType, GRPCI_SouthMsgGetOpType). */
enum GRPCI_OpType {
  GRPCI_OPTYPE_INVALID = 0, /**< not set */
  GRPCI_OPTYPE_CREATE = 1,  /**< create */
  GRPCI_OPTYPE_DELETE = 2,  /**< delete */
  GRPCI_OPTYPE_MODIFY = 3,  /**< modify */
  GRPCI_OPTYPE_NOTIFY = 4   /**< notify */
};

/** SouthMsg msg_type, the payload record that matters (GRPCI_SouthMsgSetMsgType,
 * GRPCI_SouthMsgGetMsgType); a login has none. */
enum GRPCI_MsgType {
  GRPCI_MSGTYPE_INVALID = 0,    /**< not set */
  GRPCI_MSGTYPE_CLIENT_RPC = 1, /**< the client_rpc record */
  GRPCI_MSGTYPE_SERVER_RPC = 2, /**< the server_rpc record */
  GRPCI_MSGTYPE_RPC_DATA = 3    /**< the rpc_data record */
};

/** gNMI Encoding (GetRequest, SubscriptionList, Capabilities). */
enum GNMI_Encoding {
  GNMI_ENCODING_JSON = 0,     /**< JSON */
  GNMI_ENCODING_BYTES = 1,    /**< bytes */
  GNMI_ENCODING_PROTO = 2,    /**< scalar protobuf values */
  GNMI_ENCODING_ASCII = 3,    /**< ASCII text */
  GNMI_ENCODING_JSON_IETF = 4 /**< JSON as RFC 7951 */
};

/** gNMI GetRequest.DataType (GNMI_GetRequest_GetType). */
enum GNMI_DataType {
  GNMI_DATATYPE_ALL = 0,        /**< all data */
  GNMI_DATATYPE_CONFIG = 1,     /**< configuration */
  GNMI_DATATYPE_STATE = 2,      /**< state */
  GNMI_DATATYPE_OPERATIONAL = 3 /**< operational state */
};

/** gNMI SubscriptionList.Mode (GNMI_SubscribeRequest_GetSubscriptionMode). */
enum GNMI_SubscriptionListMode {
  GNMI_SUBSCRIPTIONLIST_STREAM = 0, /**< a stream of updates */
  GNMI_SUBSCRIPTIONLIST_ONCE = 1,   /**< one answer, then the end */
  GNMI_SUBSCRIPTIONLIST_POLL = 2    /**< an answer per poll */
};

/** gNMI SubscriptionMode (GNMI_SubscribeRequest_GetSampleMode). */
enum GNMI_SubscriptionMode {
  GNMI_SUBSCRIPTIONMODE_TARGET_DEFINED = 0, /**< the target chooses */
  GNMI_SUBSCRIPTIONMODE_ON_CHANGE = 1,      /**< on each change */
  GNMI_SUBSCRIPTIONMODE_SAMPLE = 2          /**< sampled at an interval */
};

/** gNMI UpdateResult.Operation (GNMI_UpdateResult_SetOp). */
enum GNMI_UpdateResultOperation {
  GNMI_UPDATERESULT_INVALID = 0, /**< not set */
  GNMI_UPDATERESULT_DELETE = 1,  /**< a delete */
  GNMI_UPDATERESULT_REPLACE = 2, /**< a replace */
  GNMI_UPDATERESULT_UPDATE = 3   /**< an update */
};

/** The member a gNMI TypedValue holds: its field number
 * (GNMI_TypedValue_ValueCase). */
enum GNMI_TypedValueCase {
  GNMI_TYPEDVALUE_NONE = 0,           /**< no member */
  GNMI_TYPEDVALUE_STRING_VAL = 1,     /**< string_val */
  GNMI_TYPEDVALUE_INT_VAL = 2,        /**< int_val */
  GNMI_TYPEDVALUE_UINT_VAL = 3,       /**< uint_val */
  GNMI_TYPEDVALUE_BOOL_VAL = 4,       /**< bool_val */
  GNMI_TYPEDVALUE_BYTES_VAL = 5,      /**< bytes_val */
  GNMI_TYPEDVALUE_FLOAT_VAL = 6,      /**< float_val */
  GNMI_TYPEDVALUE_DECIMAL_VAL = 7,    /**< decimal_val */
  GNMI_TYPEDVALUE_LEAFLIST_VAL = 8,   /**< leaflist_val */
  GNMI_TYPEDVALUE_ANY_VAL = 9,        /**< any_val */
  GNMI_TYPEDVALUE_JSON_VAL = 10,      /**< json_val */
  GNMI_TYPEDVALUE_JSON_IETF_VAL = 11, /**< json_ietf_val */
  GNMI_TYPEDVALUE_ASCII_VAL = 12,     /**< ascii_val */
  GNMI_TYPEDVALUE_PROTO_BYTES = 13    /**< proto_bytes */
};

/** The gRPC status codes, as carried in a SouthMsg `result`. */
enum MGMTMSG_Status {
  MGMTMSG_STATUS_OK = 0,                  /**< success */
  MGMTMSG_STATUS_CANCELLED = 1,           /**< cancelled by the caller */
  MGMTMSG_STATUS_UNKNOWN = 2,             /**< unknown error */
  MGMTMSG_STATUS_INVALID_ARGUMENT = 3,    /**< invalid argument */
  MGMTMSG_STATUS_DEADLINE_EXCEEDED = 4,   /**< deadline exceeded */
  MGMTMSG_STATUS_NOT_FOUND = 5,           /**< not found */
  MGMTMSG_STATUS_ALREADY_EXISTS = 6,      /**< already exists */
  MGMTMSG_STATUS_PERMISSION_DENIED = 7,   /**< permission denied */
  MGMTMSG_STATUS_RESOURCE_EXHAUSTED = 8,  /**< resource exhausted */
  MGMTMSG_STATUS_FAILED_PRECONDITION = 9, /**< failed precondition */
  MGMTMSG_STATUS_ABORTED = 10,            /**< aborted */
  MGMTMSG_STATUS_OUT_OF_RANGE = 11,       /**< out of range */
  MGMTMSG_STATUS_UNIMPLEMENTED = 12,      /**< not implemented */
  MGMTMSG_STATUS_INTERNAL = 13,           /**< internal error */
  MGMTMSG_STATUS_UNAVAILABLE = 14,        /**< unavailable */
  MGMTMSG_STATUS_DATA_LOSS = 15,          /**< data loss */
  MGMTMSG_STATUS_UNAUTHENTICATED = 16     /**< not authenticated */
};

/** @} */
#endif
