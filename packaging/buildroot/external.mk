include $(sort $(wildcard $(BR2_EXTERNAL_WARDEX_PATH)/package/*/*.mk))
