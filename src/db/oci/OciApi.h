#pragma once

#include <cstddef>

// The part of the Oracle Call Interface this program calls, declared from Oracle's published
// OCI reference so that no Oracle header is needed to build: the handle types, the C types of
// the arguments, the constants and the prototypes, as pointers filled in when the client
// library is loaded at run time.
namespace oci {

using ub1 = unsigned char;
using sb1 = signed char;
using ub2 = unsigned short;
using sb2 = signed short;
using ub4 = unsigned int;
using sb4 = signed int;
using sb8 = long long;
using ub8 = unsigned long long;
using sword = int;
using OraText = unsigned char;

// Opaque handles and descriptors.
struct OCIEnv;
struct OCIError;
struct OCISvcCtx;
struct OCIServer;
struct OCISession;
struct OCIStmt;
struct OCIDefine;
struct OCIBind;
struct OCISnapshot;
struct OCILobLocator;

// Return codes.
inline constexpr sword SUCCESS = 0;
inline constexpr sword SUCCESS_WITH_INFO = 1;
inline constexpr sword NO_DATA = 100;
inline constexpr sword ERROR = -1;
inline constexpr sword INVALID_HANDLE = -2;

// Modes.
inline constexpr ub4 DEFAULT = 0x0;
inline constexpr ub4 THREADED = 0x1;
inline constexpr ub4 NTV_SYNTAX = 1;
inline constexpr ub4 DESCRIBE_ONLY = 0x10;
inline constexpr ub4 COMMIT_ON_SUCCESS = 0x20;
inline constexpr ub2 FETCH_NEXT = 0x2;
inline constexpr ub4 CRED_RDBMS = 1;
inline constexpr ub1 ONE_PIECE = 0;

// Handle and descriptor types.
inline constexpr ub4 HTYPE_ENV = 1;
inline constexpr ub4 HTYPE_ERROR = 2;
inline constexpr ub4 HTYPE_SVCCTX = 3;
inline constexpr ub4 HTYPE_STMT = 4;
inline constexpr ub4 HTYPE_SERVER = 8;
inline constexpr ub4 HTYPE_SESSION = 9;
inline constexpr ub4 DTYPE_LOB = 50;
inline constexpr ub4 DTYPE_PARAM = 53;

// Attributes. Numbers are shared between handle types; the handle tells which is meant.
inline constexpr ub4 ATTR_DATA_SIZE = 1;      // parameter: ub2, maximum size in bytes
inline constexpr ub4 ATTR_DATA_TYPE = 2;      // parameter: ub2, SQLT_* code
inline constexpr ub4 ATTR_NAME = 4;           // parameter: OraText*, with its length
inline constexpr ub4 ATTR_PRECISION = 5;      // parameter of a statement: sb2
inline constexpr ub4 ATTR_SCALE = 6;          // parameter: sb1
inline constexpr ub4 ATTR_SERVER = 6;         // service context: OCIServer*
inline constexpr ub4 ATTR_SESSION = 7;        // service context: OCISession*
inline constexpr ub4 ATTR_ROW_COUNT = 9;      // statement: ub4, rows processed
inline constexpr ub4 ATTR_PREFETCH_ROWS = 11; // statement: ub4
inline constexpr ub4 ATTR_PARAM_COUNT = 18;   // statement: ub4, columns of a query
inline constexpr ub4 ATTR_CHARSET_FORM = 32;  // parameter: ub1, SQLCS_*
inline constexpr ub4 ATTR_USERNAME = 22;      // session: OraText*
inline constexpr ub4 ATTR_PASSWORD = 23;      // session: OraText*
inline constexpr ub4 ATTR_STMT_TYPE = 24;     // statement: ub2
inline constexpr ub4 ATTR_ROWS_FETCHED = 197; // statement: ub4, rows of the last fetch call
inline constexpr ub4 ATTR_CHAR_SIZE = 286;    // parameter: ub2, length in characters
inline constexpr ub4 ATTR_MODULE = 366;       // session: OraText*, V$SESSION.MODULE
inline constexpr ub4 ATTR_DRIVER_NAME = 424;  // session: OraText*
inline constexpr ub4 ATTR_DEFAULT_LOBPREFETCH_SIZE = 438; // session: ub4 bytes sent with each LOB locator
inline constexpr ub4 ATTR_CALL_TIMEOUT = 531; // service context: ub4 milliseconds (18c clients on)

// Statement types.
inline constexpr ub2 STMT_SELECT = 1;

// External data types (SQLT_*).
inline constexpr ub2 SQLT_CHR = 1;
inline constexpr ub2 SQLT_NUM = 2;
inline constexpr ub2 SQLT_INT = 3;
inline constexpr ub2 SQLT_FLT = 4;
inline constexpr ub2 SQLT_STR = 5;
inline constexpr ub2 SQLT_LNG = 8;
inline constexpr ub2 SQLT_DAT = 12;
inline constexpr ub2 SQLT_BFLOAT = 21;
inline constexpr ub2 SQLT_BDOUBLE = 22;
inline constexpr ub2 SQLT_BIN = 23;
inline constexpr ub2 SQLT_LBI = 24;
inline constexpr ub2 SQLT_AFC = 96;
inline constexpr ub2 SQLT_IBFLOAT = 100;
inline constexpr ub2 SQLT_IBDOUBLE = 101;
inline constexpr ub2 SQLT_RDD = 104;
inline constexpr ub2 SQLT_CLOB = 112;
inline constexpr ub2 SQLT_BLOB = 113;
inline constexpr ub2 SQLT_TIMESTAMP = 187;
inline constexpr ub2 SQLT_TIMESTAMP_TZ = 188;
inline constexpr ub2 SQLT_INTERVAL_YM = 189;
inline constexpr ub2 SQLT_INTERVAL_DS = 190;
inline constexpr ub2 SQLT_TIMESTAMP_LTZ = 232;

// Character set forms: the database character set, or the national one (NCHAR, NCLOB).
inline constexpr ub1 SQLCS_IMPLICIT = 1;
inline constexpr ub1 SQLCS_NCHAR = 2;

// Character set ID of AL32UTF8 (UTF-8).
inline constexpr ub2 AL32UTF8 = 873;

// Indicator of a NULL value.
inline constexpr sb2 IND_NULL = -1;

extern "C" {
using OCIEnvNlsCreate_t = sword (*)(OCIEnv** envhpp, ub4 mode, void* ctxp, void* (*malocfp)(void*, size_t),
                                    void* (*ralocfp)(void*, void*, size_t), void (*mfreefp)(void*, void*),
                                    size_t xtramemSz, void** usrmempp, ub2 charset, ub2 ncharset);
using OCIHandleAlloc_t = sword (*)(const void* parenth, void** hndlpp, ub4 type, size_t xtramemSz, void** usrmempp);
using OCIHandleFree_t = sword (*)(void* hndlp, ub4 type);
using OCIDescriptorAlloc_t = sword (*)(const void* parenth, void** descpp, ub4 type, size_t xtramemSz,
                                       void** usrmempp);
using OCIDescriptorFree_t = sword (*)(void* descp, ub4 type);
using OCIErrorGet_t = sword (*)(void* hndlp, ub4 recordno, OraText* sqlstate, sb4* errcodep, OraText* bufp, ub4 bufsiz,
                                ub4 type);
using OCIAttrSet_t = sword (*)(void* trgthndlp, ub4 trghndltyp, void* attributep, ub4 size, ub4 attrtype,
                               OCIError* errhp);
using OCIAttrGet_t = sword (*)(const void* trgthndlp, ub4 trghndltyp, void* attributep, ub4* sizep, ub4 attrtype,
                               OCIError* errhp);
using OCIServerAttach_t = sword (*)(OCIServer* srvhp, OCIError* errhp, const OraText* dblink, sb4 dblinkLen, ub4 mode);
using OCIServerDetach_t = sword (*)(OCIServer* srvhp, OCIError* errhp, ub4 mode);
using OCISessionBegin_t = sword (*)(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 credt, ub4 mode);
using OCISessionEnd_t = sword (*)(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 mode);
using OCIStmtPrepare2_t = sword (*)(OCISvcCtx* svchp, OCIStmt** stmthp, OCIError* errhp, const OraText* stmttext,
                                    ub4 stmtLen, const OraText* key, ub4 keylen, ub4 language, ub4 mode);
using OCIStmtRelease_t = sword (*)(OCIStmt* stmthp, OCIError* errhp, const OraText* key, ub4 keylen, ub4 mode);
using OCIStmtExecute_t = sword (*)(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters, ub4 rowoff,
                                   const OCISnapshot* snapIn, OCISnapshot* snapOut, ub4 mode);
using OCIStmtFetch2_t = sword (*)(OCIStmt* stmthp, OCIError* errhp, ub4 nrows, ub2 orientation, sb4 fetchOffset,
                                  ub4 mode);
using OCIParamGet_t = sword (*)(const void* hndlp, ub4 htype, OCIError* errhp, void** parmdpp, ub4 pos);
using OCIDefineByPos2_t = sword (*)(OCIStmt* stmtp, OCIDefine** defnpp, OCIError* errhp, ub4 position, void* valuep,
                                    sb8 valueSz, ub2 dty, void* indp, ub4* rlenp, ub2* rcodep, ub4 mode);
using OCIBindByPos_t = sword (*)(OCIStmt* stmtp, OCIBind** bindpp, OCIError* errhp, ub4 position, void* valuep,
                                 sb4 valueSz, ub2 dty, void* indp, ub2* alenp, ub2* rcodep, ub4 maxarrLen, ub4* curelep,
                                 ub4 mode);
using OCILobGetLength2_t = sword (*)(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub8* lenp);
using OCILobRead2_t = sword (*)(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub8* byteAmtp, ub8* charAmtp,
                                ub8 offset, void* bufp, ub8 bufl, ub1 piece, void* ctxp, void* cbfp, ub2 csid,
                                ub1 csfrm);
using OCITransCommit_t = sword (*)(OCISvcCtx* svchp, OCIError* errhp, ub4 flags);
using OCITransRollback_t = sword (*)(OCISvcCtx* svchp, OCIError* errhp, ub4 flags);
using OCIBreak_t = sword (*)(void* hndlp, OCIError* errhp);
using OCIServerVersion_t = sword (*)(void* hndlp, OCIError* errhp, OraText* bufp, ub4 bufsz, ub1 hndltype);
using OCIClientVersion_t = void (*)(sword* majorVersion, sword* minorVersion, sword* updateNum, sword* patchNum,
                                    sword* portUpdateNum);
}

// The entry points, resolved from one loaded client library.
struct Api {
  OCIEnvNlsCreate_t EnvNlsCreate = nullptr;
  OCIHandleAlloc_t HandleAlloc = nullptr;
  OCIHandleFree_t HandleFree = nullptr;
  OCIDescriptorAlloc_t DescriptorAlloc = nullptr;
  OCIDescriptorFree_t DescriptorFree = nullptr;
  OCIErrorGet_t ErrorGet = nullptr;
  OCIAttrSet_t AttrSet = nullptr;
  OCIAttrGet_t AttrGet = nullptr;
  OCIServerAttach_t ServerAttach = nullptr;
  OCIServerDetach_t ServerDetach = nullptr;
  OCISessionBegin_t SessionBegin = nullptr;
  OCISessionEnd_t SessionEnd = nullptr;
  OCIStmtPrepare2_t StmtPrepare2 = nullptr;
  OCIStmtRelease_t StmtRelease = nullptr;
  OCIStmtExecute_t StmtExecute = nullptr;
  OCIStmtFetch2_t StmtFetch2 = nullptr;
  OCIParamGet_t ParamGet = nullptr;
  OCIDefineByPos2_t DefineByPos2 = nullptr;
  OCIBindByPos_t BindByPos = nullptr;
  OCILobGetLength2_t LobGetLength2 = nullptr;
  OCILobRead2_t LobRead2 = nullptr;
  OCITransCommit_t TransCommit = nullptr;
  OCITransRollback_t TransRollback = nullptr;
  OCIBreak_t Break = nullptr;
  OCIServerVersion_t ServerVersion = nullptr;
  OCIClientVersion_t ClientVersion = nullptr;
};

} // namespace oci
