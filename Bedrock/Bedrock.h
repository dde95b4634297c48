// Everything a client needs.
#pragma once

#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/bridge/ZPStringBridge.h>
#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/collections/ZPEnumerator.h>
#include <Bedrock/collections/ZPSet.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAssertionHandler.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/core/ZPObject.h>
#include <Bedrock/core/ZPProxy.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPCharacterSet.h>
#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/strings/ZPNumberReader.h>
#include <Bedrock/strings/ZPPathUtilities.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/strings/ZPStringEncoding.h>
#include <Bedrock/tables/ZPHashTable.h>
#include <Bedrock/tables/ZPMapTable.h>
#include <Bedrock/threads/ZPLock.h>
#include <Bedrock/threads/ZPThread.h>
